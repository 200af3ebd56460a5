#include "bitbuffer.h"

#include <array>

#include "entry_points/call.h"
#include "h265.h"

namespace test {
namespace {

// A cursor within 16 bytes.
struct Cursor {
    unsigned char bytes[16] = {0x02, 0x9A, 0xC3, 0x5F, 0x01, 0x77, 0xE8, 0x10, 0x4D};
    bitbuffer_t bb = {bytes, 3, 8 * sizeof bytes};
};

// Reads one value from the cursor.
template <typename Value, typename Read>
Call Reading(Fill fill, Read read) {
    const auto cursor = std::make_shared<Cursor>();
    const auto value = Filled<Value>(fill);
    return {[=] { return read(&cursor->bb, value.get()); },
            [=] { return Packed(*value, cursor->bb.bit_offset); }};
}

// Changes the cursor, or what it stands in.
template <typename Write>
Call Writing(Write write) {
    const auto cursor = std::make_shared<Cursor>();
    return {[=] { return write(&cursor->bb); },
            [=] { return Packed(cursor->bytes, cursor->bb.bit_offset, cursor->bb.num_bits); }};
}

using SixteenBytes = std::array<unsigned char, 16>;
const unsigned char kRbsp[] = {0x42, 0, 0, 1, 0, 0, 0, 0x80};

}  // namespace

std::vector<EntryPoint> BitReadingEntryPoints() {
    return {
        {"GetNextBitEx", "", [](Fill fill) { return Reading<int>(fill, GetNextBitEx); }},
        {"GetNextNBitsAsUint8", "",
         [](Fill fill) {
             return Reading<uint8_t>(
                 fill, [](bitbuffer_t *bb, uint8_t *value) { return GetNextNBitsAsUint8(bb, 7, value); });
         }},
        {"GetNextNBitsAsUint16", "",
         [](Fill fill) {
             return Reading<uint16_t>(
                 fill, [](bitbuffer_t *bb, uint16_t *value) { return GetNextNBitsAsUint16(bb, 15, value); });
         }},
        {"GetNextNBitsAsUint32", "",
         [](Fill fill) {
             return Reading<uint32_t>(
                 fill, [](bitbuffer_t *bb, uint32_t *value) { return GetNextNBitsAsUint32(bb, 31, value); });
         }},
        {"GetNextNBitsAsUint64", "",
         [](Fill fill) {
             return Reading<uint64_t>(
                 fill, [](bitbuffer_t *bb, uint64_t *value) { return GetNextNBitsAsUint64(bb, 63, value); });
         }},
        {"GetNextNBitsAsInt32", "",
         [](Fill fill) {
             return Reading<int32_t>(
                 fill, [](bitbuffer_t *bb, int32_t *value) { return GetNextNBitsAsInt32(bb, 30, value); });
         }},
        {"GetUint32Golomb", "", [](Fill fill) { return Reading<uint32_t>(fill, GetUint32Golomb); }},
        {"GetInt32Golomb", "", [](Fill fill) { return Reading<int32_t>(fill, GetInt32Golomb); }},
        {"GetNextNBitsAsStringEx", "",
         [](Fill fill) {
             return Reading<SixteenBytes>(fill, [](bitbuffer_t *bb, SixteenBytes *value) {
                 return GetNextNBitsAsStringEx(bb, 43, value->data(), sizeof *value);
             });
         }},
        {"AdvanceBitOffset", "",
         [](Fill) {
             return Writing([](bitbuffer_t *bb) {
                 AdvanceBitOffset(bb, 17);
                 return 0;
             });
         }},
        {"DisplayBitBuffer", "",
         [](Fill) {
             return Writing([](bitbuffer_t *bb) {
                 DisplayBitBuffer(bb, "BYTES");
                 return 0;
             });
         }},
        {"BitBufferSetTraceChannel", "",
         [](Fill) {
             return Call{[] {
                 BitBufferSetTraceChannel(&g_hH265LibDbg);  // as it is
                 return 0;
             }};
         },
         0, 0, true},
    };
}

std::vector<EntryPoint> BitWritingEntryPoints() {
    return {
        {"__DoInitBitBuffer", "",
         [](Fill fill) {
             static unsigned char bytes[4];
             const auto bb = Filled<bitbuffer_t>(fill);
             return Call{[=] { return __DoInitBitBuffer(bb.get(), bytes, 32, "Function", "file.c", 1); },
                         [=] { return Packed(bb->bit_buffer, bb->bit_offset, bb->num_bits); }};
         }},
        {"__DoSetNextBit", "",
         [](Fill) {
             return Writing([](bitbuffer_t *bb) { return __DoSetNextBit(bb, 1, "Function", "file.c", 1); });
         }},
        {"SetNextNBitsFromUint8", "",
         [](Fill) { return Writing([](bitbuffer_t *bb) { return SetNextNBitsFromUint8(bb, 7, 0x55); }); }},
        {"SetNextNBitsFromUint16", "",
         [](Fill) { return Writing([](bitbuffer_t *bb) { return SetNextNBitsFromUint16(bb, 15, 0x55); }); }},
        {"SetNextNBitsFromUint32", "",
         [](Fill) { return Writing([](bitbuffer_t *bb) { return SetNextNBitsFromUint32(bb, 31, 0x55); }); }},
        {"SetNextNBitsFromInt32", "",
         [](Fill) { return Writing([](bitbuffer_t *bb) { return SetNextNBitsFromInt32(bb, 31, -5); }); }},
        {"SetUint32Golomb", "",
         [](Fill) { return Writing([](bitbuffer_t *bb) { return SetUint32Golomb(bb, 12345); }); }},
        {"SetNextNBitsFromString", "",
         [](Fill) { return Writing([](bitbuffer_t *bb) { return SetNextNBitsFromString(bb, 43, kRbsp); }); }},
        {"RBSP_encapsulation_within_NAL", "",
         [](Fill fill) {
             const auto output = Filled<SixteenBytes>(fill);
             return Call{[=] {
                             return RBSP_encapsulation_within_NAL(kRbsp, sizeof kRbsp, output->data(),
                                                                  sizeof *output);
                         },
                         MemoryOf(output)};
         }},
        {"RBSP_encapsulation_within_NAL_Ex", "",
         [](Fill fill) {
             const auto output = Filled<SixteenBytes>(fill);
             return Call{[=] {
                             return RBSP_encapsulation_within_NAL_Ex(kRbsp, sizeof kRbsp, output->data(),
                                                                     sizeof *output,
                                                                     RBSP_ENCAPSULATION_MODE_BYTES);
                         },
                         MemoryOf(output)};
         }},
    };
}

}  // namespace test
