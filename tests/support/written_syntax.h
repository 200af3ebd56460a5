// What the writers make of a record, with what they report when there is no room for an element; and records
// to write.

#ifndef TESTS_SUPPORT_WRITTEN_SYNTAX_H
#define TESTS_SUPPORT_WRITTEN_SYNTAX_H

#include <random>
#include <string>

#include "h265.h"
#include "support/syntax.h"

namespace test {

// "Failed to set <element>[<index>].\n"
template <typename... Indices>
std::string Unwritable(const std::string &element, Indices... indices) {
    return "Failed to set " + element + (std::string() + ... + ("[" + std::to_string(indices) + "]")) + ".\n";
}

// hrd_parameters( ), with a common part or without.
void AddWrittenHrd(Syntax *syntax, const hrd_h265_t &hrd, bool common, int maxNumSubLayersMinus1);

// vui_parameters_present_flag and vui_parameters( ).
void AddWrittenVui(Syntax *syntax, const sps_h265_t &sps);

// Records as a parser leaves them, with every element on or off at random; what is off stays as it is.
using Random = std::mt19937;
bool Chance(Random *random);
uint64_t Below(Random *random, uint64_t end);
void FillHrd(hrd_h265_t *hrd, int maxNumSubLayersMinus1, Random *random);
void FillVui(vui_h265_t *vui, int sps_max_sub_layers_minus1, Random *random);

// Writes the structure into every room from 0 bits to its own size: the right reports, the elements that fit
// written, nothing behind them.
template <typename Write>
void SweepRoom(const Syntax &syntax, Write write) {
    const BitString &bits = syntax.bits();
    for (size_t room = 0; room <= bits.size(); room++) {
        SCOPED_TRACE("room for " + std::to_string(room) + " bits");
        std::vector<unsigned char> bytes((room + 7) / 8);
        bitbuffer_t bb{bytes.data(), 0, static_cast<unsigned int>(room)};
        const TraceCapture trace(3);
        const bool written = write(&bb);
        const std::vector<std::string> reports = syntax.ReportsWhenCut(room);
        ASSERT_EQ(written, reports.empty());
        ASSERT_EQ(trace.Errors(), reports);
        ASSERT_LE(bb.bit_offset, room);
        std::vector<unsigned char> expected = bits.Prefix(bb.bit_offset).Bytes();
        expected.resize(bytes.size());
        ASSERT_EQ(bytes, expected);
    }
}

}  // namespace test

#endif
