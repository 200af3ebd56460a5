// NAL units of drawn syntax elements, with a start code of either length.

#ifndef FUZZ_SYNTAX_NAL_UNITS_H
#define FUZZ_SYNTAX_NAL_UNITS_H

#include "support/fuzz_input.h"

namespace fuzz {

Bytes GenerateVps(FuzzInput *input);
Bytes GenerateSps(FuzzInput *input);
Bytes GeneratePps(FuzzInput *input);
Bytes GenerateSlice(FuzzInput *input);

// One message or several: of the known kinds, of others, and of payloads that are anything.
Bytes GenerateSei(FuzzInput *input);
Bytes GenerateH264Sei(FuzzInput *input);

// One of the above, an access unit delimiter, or any other NAL unit.
Bytes GenerateNalUnit(FuzzInput *input);

// Several of them, one behind the other.
Bytes GenerateStream(FuzzInput *input);

}  // namespace fuzz

#endif
