// H265Lib_formatMISPMicroSecondTimeSEI: the time comes back from the bytes of MISB ST 0604.

#include "h265.h"
#include "support/built_sei.h"
#include "support/byte_stream.h"
#include "support/check.h"
#include "support/target.h"
#include "support/trace.h"

namespace {

// Most significant byte first; 0xFF behind every second byte.
uint64_t TimeOf(const fuzz::Bytes &sodb, size_t place) {
    uint64_t time = 0;
    for (size_t pair = 0; pair < 4; pair++, place += 3)
        time = time << 16 | static_cast<uint64_t>(sodb[place]) << 8 | sodb[place + 1];
    return time;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    using namespace fuzz;
    constexpr int kLength = 36;
    constexpr size_t kUuidSize = 16;
    FuzzInput input(data, size);
    const DiscardedTrace trace(&input);
    ExactBuffer buffer(input.Flag() ? 64 : input.Below(64));
    const INT64 time = static_cast<INT64>(input.Bits(64));
    const unsigned char status = input.Byte() < 192 ? input.Byte() | 0x1F : input.Byte();

    const int length = H265Lib_formatMISPMicroSecondTimeSEI(buffer.data(), buffer.length(), &time, status);
    FUZZ_CHECK(length == kLength || length == ((status & 0x1F) == 0x1F ? 0 : -1));
    FUZZ_CHECK(length <= buffer.length());
    if (length != kLength)
        return 0;
    const Bytes nal = buffer.Content(kLength);
    const BuiltSei sei(nal);
    FUZZ_CHECK(sei.suid == SUID_UNKNOWN && sei.header.payload_type == 5);
    const Bytes sodb = Sodb(nal);
    const size_t place = sei.header.payload_index + kUuidSize;
    FUZZ_CHECK(sodb[place] == status && TimeOf(sodb, place + 1) == static_cast<uint64_t>(time));
    return 0;
}
