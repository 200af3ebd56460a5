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

// Writes the structure into a room of so many bits: the elements that fit written, nothing behind them.
template <typename Write>
void WriteIntoRoom(const Syntax &syntax, size_t room, Write write) {
    std::vector<unsigned char> bytes((room + 7) / 8);
    bitbuffer_t bb{bytes.data(), 0, static_cast<unsigned int>(room)};
    ASSERT_EQ(write(&bb), syntax.ReportsWhenCut(room).empty());
    ASSERT_LE(bb.bit_offset, room);
    std::vector<unsigned char> expected = syntax.bits().Prefix(bb.bit_offset).Bytes();
    expected.resize(bytes.size());
    ASSERT_EQ(bytes, expected);
}

// Writes the structure into every room from 0 bits to its own size, with the right reports; the same with
// nobody listening, where an element does not fit by one bit.
template <typename Write>
void SweepRoom(const Syntax &syntax, Write write) {
    for (size_t room = 0; room <= syntax.bits().size(); room++) {
        SCOPED_TRACE("room for " + std::to_string(room) + " bits");
        const TraceCapture trace(3);
        ASSERT_NO_FATAL_FAILURE(WriteIntoRoom(syntax, room, write));
        ASSERT_EQ(trace.Errors(), syntax.ReportsWhenCut(room));
    }
    syntax.ForEachCut([&](size_t room) {
        SCOPED_TRACE("room for " + std::to_string(room) + " bits");
        InSilence([&] { WriteIntoRoom(syntax, room, write); });
    });
}

}  // namespace test

#endif
