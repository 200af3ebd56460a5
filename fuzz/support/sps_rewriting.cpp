#include "support/sps_rewriting.h"

#include <cstring>
#include <memory>

#include "support/byte_stream.h"
#include "support/check.h"
#include "support/exact_buffer.h"
#include "support/nal_cases.h"
#include "support/record.h"
#include "support/trace.h"
#include "syntax/nal_units.h"
#include "syntax/vui_edit.h"

namespace fuzz {
namespace {

struct Result {
    BOOL done = FALSE;
    Bytes nal;
};

// The library's buffer is copied and released.
Result Rewrite(const SpsRewriting &rewriting, const Bytes &nal, const sps_h265_t &sps) {
    ExactBuffer buffer(nal);
    unsigned char *new_sps = nullptr;
    UINT length = 0;
    const BOOL done = rewriting.rewrite(buffer.data(), buffer.unsigned_length(), &sps, &new_sps, &length);
    FUZZ_CHECK((new_sps != nullptr) == (done != FALSE));
    FUZZ_CHECK(length <= nal.size() + 256);
    Result result = {done, new_sps != nullptr ? Bytes(new_sps, new_sps + length) : Bytes()};
    H265Lib_Release_sps_buffer(new_sps);
    FUZZ_CHECK(buffer.Content() == nal);
    return result;
}

// Start code and header alone say that the SPS did not fit.
bool DidFit(const Bytes &nal) {
    return nal.size() > StartCodeLength(nal) + kNalUnitHeaderSize;
}

// Positions move, and the last bit of unknown extension data may be one of the padding.
void ForgetPositions(sps_h265_t *sps) {
    sps->before_pic_num_samples_offset = 0;
    sps->vui_parameters_present_offset = 0;
    sps->sps_extension_present_offset = 0;
    sps->sps_extension_data_flag = 0;
    sps->vui.vui_timing_info_bitoffset = 0;
    sps->vui.vui_hrd_parameters_present_flag_bitoffset = 0;
}

// Parsed into a record that holds what is expected: elements that the SPS does not carry stay, and those it
// carries are what they should be.
void CheckElements(const Bytes &nal, const sps_h265_t &expected) {
    ExactBuffer buffer(nal);
    const auto before = std::make_unique<sps_h265_t>(expected);
    const auto after = std::make_unique<sps_h265_t>(expected);
    FUZZ_CHECK(H265Lib_Parse_sps_nal(buffer.data(), buffer.size(), after.get()));
    ForgetPositions(before.get());
    ForgetPositions(after.get());
    FUZZ_CHECK(std::memcmp(before.get(), after.get(), sizeof(sps_h265_t)) == 0);
}

// A record that parses into itself as H.265 and a cleared record have it.
bool ParseCleared(const Bytes &nal, sps_h265_t *sps) {
    ExactBuffer buffer(nal);
    return H265Lib_Parse_sps_nal(buffer.data(), buffer.size(), sps) != FALSE;
}

void CheckUnedited(const SpsRewriting &rewriting, const Bytes &nal, const sps_h265_t &sps) {
    const Result result = Rewrite(rewriting, nal, sps);
    FUZZ_CHECK(result.done == (sps.vui_parameters_present_flag == 1));
    if (result.done && DidFit(result.nal))
        FUZZ_CHECK(Sodb(result.nal) == rewriting.unedited(Sodb(nal), sps));
}

void CheckEdited(const SpsRewriting &rewriting, FuzzInput *input, const Bytes &nal, sps_h265_t *sps) {
    EditVui(input, &sps->vui);
    rewriting.edit(input, sps);
    const Result result = Rewrite(rewriting, nal, *sps);
    constexpr size_t kLongestParsed = 1512;  // start code not counted
    if (!result.done || !DidFit(result.nal) ||
        result.nal.size() - StartCodeLength(result.nal) > kLongestParsed)
        return;
    DeriveVui(&sps->vui);
    rewriting.expect(sps);
    CheckElements(result.nal, *sps);
}

}  // namespace

void CheckSpsRewriting(const uint8_t *data, size_t size, const SpsRewriting &rewriting) {
    ForEachNalUnit(data, size, {kSpsNut}, GenerateSps, [&](const Bytes &nal, FuzzInput *input) {
        const DiscardedTrace trace(input);
        const auto sps = std::make_unique<sps_h265_t>();
        if (ParseCleared(nal, sps.get())) {
            CheckUnedited(rewriting, nal, *sps);
            CheckEdited(rewriting, input, nal, sps.get());
        }
        // a record that has nothing to do with the NAL unit
        Rewrite(rewriting, nal, *AnyRecord<sps_h265_t>(input));
    });
}

}  // namespace fuzz
