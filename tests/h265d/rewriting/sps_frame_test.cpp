// What both SPS rewritings do around the rewriting of the SODB: refusals, outputs, allocations, room.

#include "h265d/rewriting/sps_frame.h"

#include <gmock/gmock.h>

#include <cstring>

#include "h264.h"
#include "support/interposed.h"
#include "support/sps_rewriting.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kNoSodb = "Failed to get SODB from RBSP. Output buffer is too small.\n";
const std::string kNotRewritten = "Failed to set vui parameters SPS NAL!\n";

class SpsFrame : public testing::TestWithParam<SpsRewriter> {
 protected:
    BOOL Rewrite(const Bytes &nal) {
        return GetParam().rewrite_nal(nal.data(), static_cast<unsigned int>(nal.size()), input_.sps.get(),
                                      &buffer_, &length_);
    }

    // Fails with these reports and outputs.
    void ExpectFailure(const Bytes &nal, const std::vector<std::string> &reports, bool cleared) {
        SCOPED_TRACE(reports.back());
        buffer_ = untouched_;
        length_ = 77;
        const TraceCapture trace(3);
        EXPECT_EQ(Rewrite(nal), FALSE);
        EXPECT_EQ(trace.Errors(), reports);
        EXPECT_EQ(trace.messages().back().function, GetParam().entry_point);
        EXPECT_EQ(buffer_, cleared ? nullptr : untouched_);
        EXPECT_EQ(length_, cleared ? 0u : 77u);
    }

    // Succeeds with `payload` behind start code and header, in a buffer of the size that is documented.
    void ExpectResult(const Bytes &nal, const Bytes &payload) {
        ASSERT_EQ(Rewrite(nal), TRUE);
        Bytes expected(nal.begin(), nal.begin() + 6);
        expected.insert(expected.end(), payload.begin(), payload.end());
        EXPECT_EQ(Bytes(buffer_, buffer_ + length_), expected);
        // filled up with zeros
        EXPECT_EQ(Bytes(buffer_ + length_, buffer_ + nal.size() + 256), Bytes(nal.size() + 256 - length_, 0));
        H265Lib_Release_sps_buffer(buffer_);
    }

    // Edits the record: with its VUI, the encapsulated SPS takes `bytes` bytes more.
    void GrowBy(size_t bytes) {
        vui_h265_t &vui = input_.sps->vui;
        vui = {};
        vui.vui_timing_info_present_flag = vui.vui_hrd_parameters_present_flag = 1;
        hrd_h265_t &hrd = vui.nal_hrd;
        hrd.nal_hrd_parameters_present_flag = hrd.vcl_hrd_parameters_present_flag = 1;
        hrd.sub_pic_hrd_params_present_flag = 1;
        hrd.cpb_cnt_minus1[0] = 31;
        const size_t target = input_.nal.size() - 6 + bytes;
        for (sub_layer_hrd_parameters_t *cpbs : {hrd.s_l_nal_hrd_parameters, hrd.s_l_vcl_hrd_parameters}) {
            for (int i = 0; i < 32; i++) {
                for (UINT64 *value :
                     {&cpbs->bit_rate_value_minus1[i], &cpbs->cpb_size_value_minus1[i],
                      &cpbs->cpb_size_du_value_minus1[i], &cpbs->bit_rate_du_value_minus1[i]}) {
                    *value = 0xFE;  // a long code word, of ones: no emulation prevention
                    if (Payload().size() <= target)
                        continue;
                    *value = 0;
                    while (*value < 0xFE && Payload().size() < target)
                        *value = *value * 2 + 2;
                    if (Payload().size() == target)
                        return;
                }
            }
        }
        FAIL();
    }

    Bytes Payload() const { return Encapsulated(GetParam().model(input_.bits, *input_.sps).bits().Bytes()); }

    ParsedSps input_{SpsWithTail(BitString().U(1, 0))};
    unsigned char *buffer_ = nullptr;
    UINT length_ = 0;

 private:
    unsigned char untouched_[1];
};

// ---- the input -----------------------------------------------------------------------------------------

TEST_P(SpsFrame, AMissingStartCodeClearsTheOutputs) {
    for (const Bytes &nal : {Bytes{0, 0, 2, 0x42, 1, 0}, Bytes{0, 0, 0, 0, 1, 0x42, 1, 0},
                             Bytes{1, 0, 0, 1, 0x42, 1, 0}, Bytes{0, 0}, Bytes{0, 0, 0}}) {
        char address[32];
        std::snprintf(address, sizeof address, "%p", static_cast<const void *>(nal.data()));
        ExpectFailure(nal, {std::string("Failed to get NAL type offset from pBuffer:") + address + ".\n"},
                      true);
    }
}

TEST_P(SpsFrame, WithoutPayloadTheOutputsAreLeftAlone) {
    for (const Bytes &nal : {Bytes{0, 0, 1, 0x42, 1}, Bytes{0, 0, 0, 1, 0x42, 1}, Bytes{0, 0, 0, 1, 0x42},
                             Bytes{0, 0, 0, 1}, Bytes{0, 0, 1}})
        ExpectFailure(nal, {kNoSodb}, false);
}

TEST_P(SpsFrame, MoreThan1512BytesLeaveTheOutputsAlone) {
    for (const size_t start_code_length : {3U, 4U}) {
        const ControlledClock clock(FreshTime());  // the first report is limited in rate
        Bytes nal(start_code_length + 1513, 0xFF);
        std::fill_n(nal.begin(), start_code_length - 1, static_cast<unsigned char>(0));
        nal[start_code_length - 1] = 1;
        ExpectFailure(nal,
                      {"Deencapsulation cannot be done as InputBufferLength:1513 is longer than "
                       "OutputBufferLength:1512.\n",
                       kNoSodb},
                      false);
    }
}

TEST_P(SpsFrame, TakesNalUnitsOf1512BytesAndTheLargestResult) {
    BitString tail;
    tail.U(1, 1).U(4, 0).U(4, 1);  // extension of unknown syntax
    Bytes nal = SpsWithTail(tail);
    nal.resize(4 + 1512, 0xA5);
    input_ = ParsedSps(nal);
    ExpectResult(nal, Payload());
    GrowBy(200);
    ExpectResult(nal, Payload());
}

TEST_P(SpsFrame, ARecordOfAnotherNalUnitClearsTheOutputs) {
    input_.sps->sps_extension_present_offset = static_cast<int>(input_.bits.size());
    ExpectFailure(input_.nal, {"Failed to get 0 bits as Uint8.\n", kNotRewritten}, true);
}

// ---- the output ----------------------------------------------------------------------------------------

TEST_P(SpsFrame, KeepsStartCodeAndHeaderWhateverTheyAre) {
    for (const Bytes &head : {Bytes{0, 0, 1, 0x42, 1}, Bytes{0, 0, 0, 1, 0x7D, 0xFE}, Bytes{0, 0, 1, 2, 0}}) {
        Bytes nal = head;
        nal.insert(nal.end(), input_.nal.begin() + 6, input_.nal.end());
        const Bytes result = GetParam().Rewritten(nal, *input_.sps);
        EXPECT_EQ(Bytes(result.begin(), result.begin() + static_cast<std::ptrdiff_t>(head.size())), head);
        EXPECT_EQ(result.size(), nal.size());
    }
}

TEST_P(SpsFrame, HasRoomFor256BytesMore) {
    GrowBy(256);
    ExpectResult(input_.nal, Payload());
}

TEST_P(SpsFrame, AnSpsThatDoesNotFitComesOutAsAHeaderAlone) {
    GrowBy(257);
    ExpectResult(input_.nal, {});
}

TEST_P(SpsFrame, EmulationPreventionComesAndGoes) {
    vui_h265_t &vui = input_.sps->vui;
    vui.vui_timing_info_present_flag = 1;
    vui.vui_num_units_in_tick = 0xFFFFFFFF;
    vui.vui_time_scale = 0xFFFFFFFF;
    const Bytes without = GetParam().Rewritten(input_.nal, *input_.sps);
    vui.vui_num_units_in_tick = 0;
    vui.vui_time_scale = 1;
    const Bytes with = GetParam().Rewritten(input_.nal, *input_.sps);
    EXPECT_EQ(with, GetParam().Expected(input_, *input_.sps));
    EXPECT_EQ(with.size(), without.size() + 3);  // eight bytes of 0, and the one before them

    const ParsedSps again(with);
    again.sps->vui.vui_num_units_in_tick = 0xFFFFFFFF;
    again.sps->vui.vui_time_scale = 0xFFFFFFFF;
    EXPECT_EQ(GetParam().Rewritten(with, *again.sps), without);
}

TEST_P(SpsFrame, TakesTwoBlocksAndReportsEachThatFails) {
    {
        const FailingAllocations allocations(0);
        ExpectResult(input_.nal, Payload());
        EXPECT_EQ(FailingAllocations::Calls(), 2);
    }
    {
        const FailingAllocations second(2);
        ExpectFailure(input_.nal, {"Failed to allocate 1512 bits to store old SPS string.\n", kNotRewritten},
                      true);
    }
    const FailingAllocations first(1);
    buffer_ = input_.nal.data();
    length_ = 77;
    const TraceCapture trace(3);
    EXPECT_EQ(Rewrite(input_.nal), FALSE);
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("pNewSpsBuffer = calloc(1, NewSpsBufLength)")));
    EXPECT_EQ(trace.messages().back().function, GetParam().entry_point);
    EXPECT_THAT(trace.Errors(), IsEmpty());
    EXPECT_EQ(buffer_, nullptr);
    EXPECT_EQ(length_, 0u);
}

TEST_P(SpsFrame, FillsUpWithZerosWhateverTheBlockHeld) {
    ASSERT_EQ(Rewrite(input_.nal), TRUE);
    std::memset(buffer_, 0xA5, input_.nal.size() + 256);
    H265Lib_Release_sps_buffer(buffer_);  // where the next block of its size comes from
    ExpectResult(input_.nal, Payload());
}

TEST_P(SpsFrame, WithoutItsChannelTheLibraryIsSilent) {
    const TraceCapture trace;
    const HDBG channel = g_hH265LibDbg;
    g_hH265LibDbg = nullptr;
    {
        const FailingAllocations second(2);
        EXPECT_EQ(Rewrite(input_.nal), FALSE);
    }
    EXPECT_EQ(Rewrite(input_.nal), TRUE);
    H265Lib_Release_sps_buffer(buffer_);
    g_hH265LibDbg = channel;
    EXPECT_THAT(trace.messages(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Both, SpsFrame, testing::Values(kSpsModification, kSpsVuiReplacement),
                         [](const auto &rewriter) { return std::string(rewriter.param.entry_point); });

}  // namespace
}  // namespace test
