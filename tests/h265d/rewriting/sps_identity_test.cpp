// Both rewritings of SPSs of an encoder and of generated ones.

#include <gmock/gmock.h>

#include <filesystem>

#include "support/samples.h"
#include "support/sps_rewriting.h"

namespace test {
namespace {

// The input with general_non_packed_constraint_flag and general_frame_only_constraint_flag 0.
Bytes WithoutConstraintFlags(const ParsedSps &input) {
    Bytes rbsp = input.bits.Bytes();
    const size_t offset = static_cast<size_t>(input.sps->ptl.general_scantype_bitoffset);
    for (const size_t bit : {offset + 2, offset + 3})
        rbsp[bit / 8] = static_cast<unsigned char>(rbsp[bit / 8] & ~(0x80 >> bit % 8));
    return NalUnit(kSpsNut, rbsp, input.header());
}

// With the unchanged record the input comes back.
void ExpectIdentity(const ParsedSps &input) {
    const TraceCapture trace(4);
    ASSERT_EQ(kSpsVuiReplacement.Rewritten(input.nal, *input.sps), input.nal);
    ASSERT_EQ(kSpsModification.Rewritten(input.nal, *input.sps), WithoutConstraintFlags(input));
    ASSERT_THAT(trace.messages(), testing::IsEmpty());
}

// A VUI of other content changes the VUI alone: the other elements are there as before, and the new ones.
void ExpectNewVui(const ParsedSps &input, const SpsRewriter &rewriter, Random *random) {
    const auto edited = std::make_unique<sps_h265_t>(*input.sps);
    edited->vui = {};
    FillVui(&edited->vui, edited->sps_max_sub_layers_minus1, random);
    const Bytes result = rewriter.Rewritten(input.nal, *edited);
    ASSERT_EQ(result, rewriter.Expected(input, *edited));
    if (result.size() == static_cast<size_t>(input.header()) + 2)  // did not fit
        return;

    const auto parsed = std::make_unique<sps_h265_t>(*edited);
    ASSERT_EQ(H265Lib_Parse_sps_nal(result.data(), result.size(), parsed.get()), TRUE);
    edited->sps_extension_present_offset = parsed->sps_extension_present_offset;
    edited->sps_extension_data_flag = parsed->sps_extension_data_flag;  // the last bit, padding perhaps
    edited->ptl.general_non_packed_constraint_flag = parsed->ptl.general_non_packed_constraint_flag;
    edited->ptl.general_frame_only_constraint_flag = parsed->ptl.general_frame_only_constraint_flag;
    if (rewriter.model == SpsWithNewVui) {
        ASSERT_EQ(edited->ptl.general_non_packed_constraint_flag,
                  input.sps->ptl.general_non_packed_constraint_flag);
        ASSERT_EQ(edited->ptl.general_frame_only_constraint_flag,
                  input.sps->ptl.general_frame_only_constraint_flag);
    }
    // what the parser derives
    vui_h265_t &vui = edited->vui;
    vui.vui_timing_info_bitoffset = parsed->vui.vui_timing_info_bitoffset;
    vui.vui_hrd_parameters_present_flag_bitoffset = parsed->vui.vui_hrd_parameters_present_flag_bitoffset;
    vui.CpbDpbDelaysPresentFlag = parsed->vui.CpbDpbDelaysPresentFlag;
    if (vui.vui_timing_info_present_flag && !vui.vui_hrd_parameters_present_flag) {
        vui.nal_hrd.au_cpb_removal_delay_length_minus1 = 23;
        vui.nal_hrd.dpb_output_delay_length_minus1 = 23;
        vui.nal_hrd.dpb_output_delay_du_length_minus1 = 0;
        vui.nal_hrd.du_cpb_removal_delay_increment_length_minus1 = 0;
    }
    ASSERT_EQ(std::memcmp(parsed.get(), edited.get(), sizeof *parsed), 0);
}

TEST(SpsIdentity, EverySampleComesBack) {
    int count = 0;
    Random random(421);
    for (const char *folder : {"", "units/"}) {
        for (const auto &entry : std::filesystem::directory_iterator(SAMPLES_DIR "/" + std::string(folder))) {
            if (!entry.is_regular_file())
                continue;
            const std::string file = folder + entry.path().filename().string();
            SCOPED_TRACE(file);
            for (const Bytes &nal : SampleNalUnits(file, kSpsNut)) {
                const ParsedSps input(nal);
                count++;
                ASSERT_EQ(input.sps->vui_parameters_present_flag, 1);
                ExpectIdentity(input);
                for (int round = 0; round < 20 && !testing::Test::HasFatalFailure(); round++) {
                    ExpectNewVui(input, kSpsModification, &random);
                    ExpectNewVui(input, kSpsVuiReplacement, &random);
                }
                if (testing::Test::HasFatalFailure())
                    return;
            }
        }
    }
    EXPECT_GE(count, 22);
}

TEST(SpsIdentity, GeneratedOnesComeBack) {
    Random random(422);
    int tails[3] = {};  // of fewer than 8, exactly 8, and more bits
    int escaped = 0;
    for (int round = 0; round < 2000; round++) {
        SCOPED_TRACE(round);
        const ParsedSps input(RandomSps(&random));
        ExpectIdentity(input);
        ExpectNewVui(input, round % 2 != 0 ? kSpsModification : kSpsVuiReplacement, &random);
        if (testing::Test::HasFailure())
            return;
        tails[input.tail_bits() < 8 ? 0 : input.tail_bits() == 8 ? 1 : 2]++;
        escaped += input.nal.size() > input.bits.size() / 8 + static_cast<size_t>(input.header()) + 2;
    }
    for (const int count : tails)
        EXPECT_GT(count, 20);
    EXPECT_GT(escaped, 20);
}

}  // namespace
}  // namespace test
