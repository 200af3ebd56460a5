// What the tests of the SEI builders share: an output whose every byte is accounted for, the way back through
// the scanner, and messages written down element by element.

#ifndef TESTS_H265_SEI_BUILT_SEI_H
#define TESTS_H265_SEI_BUILT_SEI_H

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>

#include "bitbuffer.h"
#include "support/nal_unit.h"
#include "support/silence.h"
#include "support/syntax.h"
#include "support/trace_capture.h"

namespace test {

constexpr int kPrefixSei = 39;
constexpr int kSeiStartCodeLength = 3;
inline const Bytes kSeiPrefix = {0x00, 0x00, 0x01, 0x4E, 0x01};

inline Bytes Joined(std::initializer_list<Bytes> parts) {
    Bytes whole;
    for (const Bytes &part : parts)
        whole.insert(whole.end(), part.begin(), part.end());
    return whole;
}

// A heap block of exactly the capacity, prefilled.
class Output {
 public:
    explicit Output(int capacity)
        : size_(static_cast<unsigned int>(capacity)), block_(std::make_unique<unsigned char[]>(size_)) {
        std::fill_n(block_.get(), size_, kPrefill);
    }

    unsigned char *data() { return block_.get(); }
    Bytes bytes() const { return Bytes(block_.get(), block_.get() + size_); }

    // What it holds when `head` was written to its start and the rest is as it was.
    Bytes Holding(Bytes head) const {
        EXPECT_LE(head.size(), size_);
        head.resize(size_, kPrefill);
        return head;
    }

 private:
    size_t size_;
    std::unique_ptr<unsigned char[]> block_;
};

struct ScannedSei {
    SEI_message_t header{};
    int suid = -1;
};

// The only message of a NAL unit.
inline ScannedSei ScanOnly(const Bytes &nal) {
    ScannedSei sei;
    int payload_offset = 0;
    int nal_type_offset = 0;
    BOOL more = TRUE;
    EXPECT_EQ(H265Lib_DetermineSEIType(nal.data(), static_cast<int>(nal.size()), &payload_offset,
                                       &nal_type_offset, &sei.header, &sei.suid, &more),
              TRUE);
    EXPECT_EQ(more, FALSE);
    return sei;
}

// A message with the reports of the elements that cannot be written; `add_payload` adds those of the payload.
inline Syntax SeiMessage(int payload_type, const std::function<void(Syntax *)> &add_payload) {
    Syntax payload;
    add_payload(&payload);
    const size_t bits = payload.bits().size();

    Syntax message;
    message
        .U(8, static_cast<uint64_t>(payload_type), kNotKept,
           "Failed to set payload type:" + std::to_string(payload_type) + ".\n")
        .U(8, (bits + 7) / 8, kNotKept, "Failed to set last payload size byte.\n");
    add_payload(&message);
    if (bits % 8 != 0)
        message.Flag(1, kNotKept, "Failed to set payload_bit_equal_to_one.\n");
    while (message.bits().size() % 8 != 0)
        message.Flag(0, kNotKept, "Failed to set payload_bit_equal_to_zero.\n");
    message.Flag(1, kNotKept, "Failed to set stop bit.\n");
    for (int i = 0; i < 7; i++)
        message.Flag(0, kNotKept, "Failed to set padding bit.\n");
    return message;
}

inline Bytes SeiNalUnit(const Syntax &message) {
    return NalUnit(kPrefixSei, message.bits().Bytes(), kSeiStartCodeLength);
}

// Writes the message into a cursor of this capacity: the elements in front of the one that does not fit
// written, all other bits as they were.
inline void WriteIntoCapacity(const Syntax &message, size_t capacity,
                              const std::function<int(bitbuffer_t *)> &write) {
    const size_t whole = message.bits().size();
    const size_t size_written =
        whole - 8;  // the size is known when the trailing bits are all that is missing
    Output block(static_cast<int>((capacity + 7) / 8));
    bitbuffer_t bb{block.data(), 0, static_cast<unsigned int>(capacity)};
    ASSERT_EQ(write(&bb), message.ReportsWhenCut(capacity).empty() ? static_cast<int>(whole / 8) : -1);

    ASSERT_LE(bb.bit_offset, capacity);
    BitString expected;
    const Bytes untouched = block.Holding({});
    for (size_t i = 0; i < untouched.size() * 8; i++) {
        const bool placeholder = i >= 8 && i < 16 && capacity < size_written;
        const bool written = message.bits()[std::min(i, whole - 1)] && !placeholder;
        expected.U(1, i < bb.bit_offset ? written : untouched[i / 8] >> (7 - i % 8));
    }
    ASSERT_EQ(block.bytes(), expected.Bytes());
}

// Writes the message into cursors of every capacity: the right report in the name of `function`. The same
// with nobody listening, where an element does not fit by one bit.
inline void SweepCapacities(const Syntax &message, const std::string &function,
                            const std::function<int(bitbuffer_t *)> &write) {
    for (size_t capacity = 0; capacity <= message.bits().size(); capacity++) {
        SCOPED_TRACE("capacity " + std::to_string(capacity));
        const TraceCapture trace(3);
        ASSERT_NO_FATAL_FAILURE(WriteIntoCapacity(message, capacity, write));
        ASSERT_EQ(trace.Errors(), message.ReportsWhenCut(capacity));
        for (const TracedMessage &report : trace.messages())
            ASSERT_EQ(report.function, function);
    }
    message.ForEachCut([&](size_t capacity) {
        SCOPED_TRACE("capacity " + std::to_string(capacity));
        InSilence([&] { WriteIntoCapacity(message, capacity, write); });
    });
}

}  // namespace test

#endif
