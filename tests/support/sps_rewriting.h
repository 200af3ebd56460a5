// Models of the two rewritings of an SPS, made of bit strings, and SPSs to rewrite.

#ifndef TESTS_SUPPORT_SPS_REWRITING_H
#define TESTS_SUPPORT_SPS_REWRITING_H

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "h265.h"
#include "support/nal_unit.h"
#include "support/written_syntax.h"

namespace test {

constexpr int kSpsNut = 33;

// An SPS as it is rewritten: its NAL unit, the bits behind the NAL unit header, and the parsed record, made
// by a parse into a cleared one.
struct ParsedSps {
    Bytes nal;
    BitString bits;
    std::unique_ptr<sps_h265_t> sps;

    explicit ParsedSps(const Bytes &sps_nal);
    int header() const { return nal[2] == 1 ? 3 : 4; }
    int tail_bits() const { return static_cast<int>(bits.size()) - sps->sps_extension_present_offset; }
};

// What the rewritings give, with the reports of what has no room. The record holds the input's positions.
Syntax ModifiedSps(const BitString &input, const sps_h265_t &sps);
Syntax SpsWithNewVui(const BitString &input, const sps_h265_t &sps);

// One of the two rewritings, for the tests that hold for both.
struct SpsRewriter {
    const char *entry_point;
    const char *function;
    BOOL (*rewrite_nal)(const unsigned char *, unsigned int, const sps_h265_t *, unsigned char **, UINT *);
    int (*rewrite)(bitbuffer_t *, int, const sps_h265_t *, bitbuffer_t *, int);
    Syntax (*model)(const BitString &, const sps_h265_t &);

    // The new NAL unit; none when the rewriting fails.
    Bytes Rewritten(const Bytes &nal, const sps_h265_t &sps) const;

    // What the rewriting of the data itself returns.
    int Result(const ParsedSps &input) const;

    // What it has to be: start code and header alone when the SPS grows by more than 256 bytes.
    Bytes Expected(const ParsedSps &input, const sps_h265_t &sps) const;
};

void PrintTo(const SpsRewriter &rewriter, std::ostream *out);

extern const SpsRewriter kSpsModification;
extern const SpsRewriter kSpsVuiReplacement;

// An SPS of random content: every element of its VUI on or off, 1 to 7 sub-layers, all kinds of tails.
Bytes RandomSps(Random *random);

// A small SPS: an empty VUI, and `tail` from sps_extension_present_flag to the trailing bits.
Bytes SpsWithTail(const BitString &tail);

}  // namespace test

#endif
