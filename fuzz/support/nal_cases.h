// The NAL units that an input stands for.
//
// An input that begins with a start code is taken as it is, as the files of tests/samples are: first the
// whole input as one NAL unit, then, if it is a stream, each NAL unit of the wanted types in it; everything
// else about the run follows from a checksum of the input. Any other input is a recipe: its bytes are drawn
// to generate a NAL unit, to damage it a little, and then to decide about the rest of the run.

#ifndef FUZZ_SUPPORT_NAL_CASES_H
#define FUZZ_SUPPORT_NAL_CASES_H

#include <functional>
#include <initializer_list>

#include "support/fuzz_input.h"

namespace fuzz {

// The NAL unit header's types.
inline constexpr int kVpsNut = 32;
inline constexpr int kSpsNut = 33;
inline constexpr int kPpsNut = 34;
inline constexpr int kPrefixSeiNut = 39;
inline constexpr int kSuffixSeiNut = 40;

using NalUse = std::function<void(const Bytes &nal, FuzzInput *input)>;

// `wanted`: the types of interest; none: all. `generate` gives a NAL unit with its start code.
void ForEachNalUnit(const uint8_t *data, size_t size, std::initializer_list<int> wanted,
                    Bytes (*generate)(FuzzInput *), const NalUse &use);

}  // namespace fuzz

#endif
