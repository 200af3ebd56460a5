// Copy runs of the parameter set rewriting: bits of the input that go to the output as they are.
//
// Rewriting never re-serialises a parameter set. It alternates copy runs, up to positions that the parser has
// recorded, with writes of new values, behind which the reader skips the elements replaced.

#ifndef H265D_REWRITING_REWRITE_RUN_H
#define H265D_REWRITING_REWRITE_RUN_H

#include "bitbuffer.h"
#include "common/trace.h"

inline constexpr unsigned int BIT_STRING_CAPACITY = 1512;  // bytes; no input SODB is longer

// The bit string that runs pass through; frees itself, and traces the exit of a rewriting that was given up.
struct BitString {
    TraceSite site;
    unsigned char *bytes;
    bool done = false;

    ~BitString();
};

// Takes the heap block. Returns false when there is none, which has been reported in the name of `site`.
bool AllocateBitString(BitString *string);

// The bits from the cursor to a recorded position. A position that is none gives a number that no run can
// have.
inline int BitsUpTo(int position, const bitbuffer_t &reader) {
    return static_cast<int>(static_cast<unsigned int>(position) - reader.bit_offset);
}

// Moves num_bits bits from the reader to the bit string, or from there to the writer. Return 0, or -1
// (reported) when they are not there or do not fit; negative numbers of bits fail as well.
int ReadRun(bitbuffer_t *reader, int num_bits, BitString *string);
int WriteRun(bitbuffer_t *writer, int num_bits, const BitString &string);

// Both.
int CopyRun(bitbuffer_t *reader, int num_bits, bitbuffer_t *writer, BitString *string);

#endif
