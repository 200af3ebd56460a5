// Services that refuse: the libraries' calls of the bit buffer's opening, of write, and of the removal of
// emulation prevention bytes come here.

#ifndef TESTS_SUPPORT_INTERPOSED_SERVICES_H
#define TESTS_SUPPORT_INTERPOSED_SERVICES_H

namespace test {

// While alive, the opening of bit buffers fails from the first one given on (counted from 1). What is opened
// then is a buffer without bits.
class RefusedBitBuffers {
 public:
    explicit RefusedBitBuffers(int first_refused);
    ~RefusedBitBuffers();
    RefusedBitBuffers(const RefusedBitBuffers &) = delete;
    RefusedBitBuffers &operator=(const RefusedBitBuffers &) = delete;
};

// The next calls of write, so many, are interrupted by a signal.
void InterruptWrites(int calls);

// While alive, the removal of emulation prevention bytes does nothing but say that it gave so many bytes: as
// from a NAL unit of a size that a test does not have.
class PretendedSodbLength {
 public:
    explicit PretendedSodbLength(int length);
    ~PretendedSodbLength();
    PretendedSodbLength(const PretendedSodbLength &) = delete;
    PretendedSodbLength &operator=(const PretendedSodbLength &) = delete;

    // The length of the input that it was last given.
    static unsigned int InputLength();
};

}  // namespace test

#endif
