// What `edit` makes of streams that no encoder at hand writes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "edit/planner.h"
#include "edit/unit_replacer.h"
#include "sample_units.h"
#include "unit_error.h"

namespace h265tool {
namespace {

using test::BitString;
using test::Bytes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

Bytes SpsUnit(unsigned int id, const BitString &vui = {}) {
    return Unit(kSps, Sps({.id = id, .vui = vui})).head;
}
Bytes PpsUnit(unsigned int id, unsigned int sps_id) {
    return Unit(kPps, Pps(id, sps_id)).head;
}
Bytes Idr(unsigned int pps_id) {
    return Unit(kIdrNLp, BitString().U(2, 2).Ue(pps_id).Ue(2)).head;
}
Bytes SeiUnit(const Bytes &rbsp) {
    return test::NalUnit(kPrefixSei, rbsp);
}

// vui_parameters( ) with frame_field_info_present_flag alone.
const BitString kFrameFieldInfo = BitString().U(6, 0).U(1, 1).U(3, 0);
const BitString kFields = BitString().U(5, 0).U(2, 3).U(3, 0);

// pic_struct 5 behind zero bytes, in 2 bytes.
const Bytes kTiming = SeiUnit({1, 2, 0x50, 0x80, 0x80});

EditPlan PlanOf(const EditRequest &request, const std::vector<Bytes> &units) {
    EditPlanner planner(request);
    for (const NalUnit &unit : Units(Joined(units)))
        planner.Take(unit);
    return planner.Finish();
}

Bytes Edited(const EditRequest &request, const std::vector<Bytes> &units) {
    const EditPlan plan = PlanOf(request, units);
    EXPECT_THAT(plan.notes, IsEmpty());
    Bytes out;
    UnitReplacer replacer(plan.replacements, [&out](std::span<const unsigned char> bytes) {
        out.insert(out.end(), bytes.begin(), bytes.end());
    });
    AnnexBScanner scanner(replacer);
    const Bytes stream = Joined(units);
    scanner.Scan(stream);
    scanner.Finish();
    replacer.Finish(stream.size());
    return out;
}

// Why it cannot be done.
std::string Complaint(const EditRequest &request, const std::vector<Bytes> &units) {
    try {
        Edited(request, units);
    } catch (const UnitError &error) {
        return error.what();
    }
    return {};
}

// A complaint about the NAL unit behind these.
std::string Behind(const std::vector<Bytes> &units, const std::string &reason) {
    return "NAL unit at offset " + std::to_string(Joined(units).size()) + ": " + reason;
}

EditRequest WithPicStruct(unsigned char pic_struct) {
    EditRequest request;
    request.pic_struct = pic_struct;
    return request;
}

EditRequest WithRange(bool full) {
    EditRequest request;
    request.full_range = full;
    return request;
}

EditRequest Interlaced() {
    EditRequest request;
    request.interlaced = true;
    return request;
}

Bytes WithLayer(Bytes unit, unsigned char nuh_layer_id) {
    unit[5] = static_cast<unsigned char>(unit[5] | nuh_layer_id << 3);
    return unit;
}

std::unique_ptr<sps_h265_t> Parsed(const Bytes &sps_unit) {
    auto sps = std::make_unique<sps_h265_t>();
    EXPECT_TRUE(H265Lib_Parse_sps_nal(sps_unit.data(), sps_unit.size(), sps.get()));
    return sps;
}

TEST(EditStream, AddsAVuiThatSaysWhatIsAskedFor) {
    // video_signal_type_present_flag, video_format 5, video_full_range_flag
    const BitString vui = BitString().U(2, 0).U(1, 1).U(3, 5).U(1, 1).U(1, 0).U(7, 0);
    EXPECT_EQ(Edited(WithRange(true), {SpsUnit(0)}), SpsUnit(0, vui));
}

TEST(EditStream, AnSpsThatIsRewrittenAsAWholeGetsAnEmptyVui) {
    const auto before = Parsed(SpsUnit(0));
    ASSERT_EQ(before->ptl.general_progressive_source_flag, 1);
    ASSERT_EQ(before->ptl.general_frame_only_constraint_flag, 1);
    Bytes expected = SpsUnit(0, BitString().U(10, 0));
    const auto flags = std::find(expected.begin(), expected.end(), 0x90);
    ASSERT_NE(flags, expected.end());
    *flags = 0x40;
    EXPECT_EQ(Edited(Interlaced(), {SpsUnit(0)}), expected);
    EXPECT_EQ(Edited(Interlaced(), {expected}), expected);
}

TEST(EditStream, ExtensionDataOfAnSpsStays) {
    const BitString vui = BitString().U(2, 0).U(1, 1).U(3, 5).U(1, 1).U(1, 0).U(7, 0);
    for (unsigned int length = 0; length < 20; length++) {
        const auto with_data = [length](const BitString &sps) {
            return Unit(kSps, sps.Prefix(sps.size() - 1).U(1, 1).U(8, 1).U(length, 0x55555)).head;
        };
        EXPECT_EQ(Edited(WithRange(true), {with_data(Sps({}))}), with_data(Sps({.vui = vui}))) << length;
    }
}

TEST(EditStream, EverySpsIsChangedAndOtherLayersAreNot) {
    const BitString vui = BitString().U(2, 0).U(1, 1).U(3, 2).U(1, 1).U(1, 0).U(7, 0);
    const BitString limited = BitString().U(2, 0).U(1, 1).U(3, 2).U(1, 0).U(1, 0).U(7, 0);
    const Bytes other_layer = WithLayer(SpsUnit(0, vui), 1);
    EXPECT_EQ(Edited(WithRange(false), {SpsUnit(0, vui), other_layer, SpsUnit(3, vui), PpsUnit(0, 3), Idr(0),
                                        SpsUnit(3, limited)}),
              Joined({SpsUnit(0, limited), other_layer, SpsUnit(3, limited), PpsUnit(0, 3), Idr(0),
                      SpsUnit(3, limited)}));
}

TEST(EditStream, AnSpsHasToBeReadable) {
    const Bytes broken = Unit(kSps, BitString().U(4, 0)).head;
    EXPECT_EQ(Complaint(WithRange(true), {SpsUnit(0), broken}),
              Behind({SpsUnit(0)}, "cannot parse general_profile_space."));
    Bytes huge = SpsUnit(0);
    huge.resize(2000, 0xFF);
    EXPECT_THAT(Complaint(WithRange(true), {huge}), testing::StartsWith("NAL unit at offset 0: "));
    // where it does not matter
    EXPECT_EQ(Edited(WithPicStruct(8), {broken, SpsUnit(0, kFrameFieldInfo), PpsUnit(0, 0), kTiming, Idr(0)}),
              Joined({broken, SpsUnit(0, kFrameFieldInfo), PpsUnit(0, 0), SeiUnit({1, 2, 0x80, 0x80, 0x80}),
                      Idr(0)}));
}

TEST(EditStream, ThereHasToBeAnSps) {
    EXPECT_EQ(Complaint(WithRange(true), {SeiUnit({5, 0, 0x80})}), "it holds no SPS");
}

BitString Vps(unsigned int source_flags, unsigned int timing_flag = 0) {
    BitString vps;
    vps.U(4, 0).U(1, 1).U(1, 1).U(6, 0).U(3, 0).U(1, 1).U(16, 0xFFFF);
    vps.U(8, 1).U(32, 0x60000000).U(4, source_flags).U(43, 0).U(1, 0).U(8, 93);
    vps.U(1, 0).Ue(4).Ue(2).Ue(0).U(6, 0).Ue(0);
    return vps.U(1, timing_flag);
}

TEST(EditStream, AVpsBecomesInterlaced) {
    const Bytes sps = Edited(Interlaced(), {SpsUnit(0)});
    for (const unsigned int flags : {0x0U, 0x2U, 0x4U, 0x6U, 0x8U, 0x9U, 0xFU}) {
        const Bytes vps = Unit(kVps, Vps(flags).U(1, 0)).head;
        const Bytes expected = Unit(kVps, Vps(4 | (flags & 2)).U(1, 0)).head;
        // without zero bytes there is less emulation prevention
        EXPECT_EQ(vps.size() - expected.size(), flags == 0 ? 1U : 0U);
        EXPECT_EQ(Edited(Interlaced(), {vps, SpsUnit(0)}), Joined({expected, sps})) << flags;
        EXPECT_EQ(Edited(Interlaced(), {WithLayer(vps, 1), SpsUnit(0)}), Joined({WithLayer(vps, 1), sps}));
    }
}

TEST(EditStream, AVpsThatDoesNotBecomeWhatItShouldIsAnError) {
    // emulation prevention is missing, so that the result has no room
    Bytes vps = Unit(kVps, Vps(9).U(1, 0)).head;
    const Bytes flags = {0x90, 0, 0, 3};
    const auto at = std::search(vps.begin(), vps.end(), flags.begin(), flags.end());
    ASSERT_NE(at, vps.end());
    vps.erase(at + 3);
    EXPECT_EQ(Complaint(Interlaced(), {vps, SpsUnit(0)}),
              "NAL unit at offset 0: rewriting failed: ptl.general_progressive_source_flag is 1, not 0");
    EXPECT_EQ(Complaint(Interlaced(), {Unit(kVps, BitString().U(4, 0)).head, SpsUnit(0)}),
              "NAL unit at offset 0: cannot parse vps_max_layers_minus1.");
}

TEST(EditStream, TellsOfTimingThatStaysInTheVps) {
    const Bytes vps = Unit(kVps, Vps(9, 1).U(32, 1).U(32, 25).U(1, 0).Ue(1).Ue(0).U(2, 0).U(3, 0).Ue(0)).head;
    EditRequest request;
    request.timing = TimingInfo{1, 25};
    EXPECT_THAT(PlanOf(request, {vps, SpsUnit(0)}).notes, IsEmpty());
    request.timing = TimingInfo{1, 50};
    EXPECT_THAT(PlanOf(request, {vps, SpsUnit(0), vps}).notes,
                ElementsAre("VPS 0 has timing information of its own, which stays"));
    request.hrd = HrdFields{"FILE", Json::parse(R"({"nal_hrd_parameters_present_flag": 0,
        "vcl_hrd_parameters_present_flag": 0, "fixed_pic_rate_general_flag": [0],
        "fixed_pic_rate_within_cvs_flag": [0], "low_delay_hrd_flag": [1]})")};
    EXPECT_THAT(PlanOf(request, {vps, SpsUnit(0)}).notes,
                ElementsAre("VPS 0 has timing information of its own, which stays",
                            "VPS 0 has HRD parameters of its own, which stay"));
    request.timing.reset();
    EXPECT_EQ(Complaint(request, {SpsUnit(0)}),
              "NAL unit at offset 0: --hrd: it has no timing information, which HRD parameters come with "
              "(--timing or --fps adds it)");
}

TEST(EditStream, PicStructChangesAmongOtherMessages) {
    const std::vector<Bytes> units = {SpsUnit(0, kFrameFieldInfo), PpsUnit(0, 0),
                                      SeiUnit({137, 3, 0, 0, 1, 1, 1, 0x50, 5, 1, 7, 1, 1, 0x3F, 0x80}),
                                      Idr(0)};
    EXPECT_EQ(Edited(WithPicStruct(8), units),
              Joined({units[0], units[1], SeiUnit({137, 3, 0, 0, 1, 1, 1, 0x80, 5, 1, 7, 1, 1, 0x8F, 0x80}),
                      units[3]}));
}

TEST(EditStream, PicStructMayNeedEmulationPreventionOrNoMore) {
    const BitString vui = VuiWithHrd(8, 12, true);
    // pic_struct 8, delays 1 and 0: 80 80 00 00 becomes 00 80 00 00; and two zero bytes in front
    const auto stream = [&](unsigned char first) {
        return std::vector<Bytes>{SpsUnit(0, vui),
                                  PpsUnit(0, 0),
                                  SeiUnit({0x89, 2, 0, 0, 1, 4, first, 0x01, 0x00, 0x10, 0x80}),
                                  Idr(0),
                                  SeiUnit({0x89, 1, 0, 1, 4, first, 0x00, 0x01, 0x10, 0x80}),
                                  Idr(0)};
    };
    const std::vector<Bytes> frame = stream(0x00);
    const std::vector<Bytes> tripled = stream(0x80);
    ASSERT_EQ(frame[4].size(), tripled[4].size() + 1);
    EXPECT_EQ(Edited(WithPicStruct(8), frame), Joined(tripled));
    EXPECT_EQ(Edited(WithPicStruct(0), tripled), Joined(frame));
}

TEST(EditStream, PicStructDependsOnTheSpsOfTheFirstSlice) {
    const Bytes plain = SpsUnit(0);
    const Bytes fields = SpsUnit(1, kFields);
    const Bytes top = SeiUnit({1, 1, 0x10, 0x80});
    const Bytes bottom = SeiUnit({1, 1, 0x20, 0x80});
    EXPECT_EQ(Edited(WithPicStruct(2), {plain, fields, PpsUnit(0, 0), PpsUnit(1, 1), top, Idr(1)}),
              Joined({plain, fields, PpsUnit(0, 0), PpsUnit(1, 1), bottom, Idr(1)}));
    EXPECT_EQ(Complaint(WithPicStruct(2), {plain, fields, PpsUnit(0, 0), top, Idr(0)}),
              Behind({plain, fields, PpsUnit(0, 0)},
                     "pic_timing has no pic_struct: frame_field_info_present_flag of the SPS is 0"));
    EXPECT_EQ(Complaint(WithPicStruct(0), {plain, fields, PpsUnit(0, 1), top, Idr(0)}),
              Behind({plain, fields, PpsUnit(0, 1)}, "pic_struct 0 does not fit field_seq_flag 1"));
}

TEST(EditStream, PicturesAreReadBeforePictureTimingChanges) {
    const Bytes sps = SpsUnit(0, kFrameFieldInfo);
    EXPECT_EQ(Complaint(WithPicStruct(8), {sps, kTiming, Idr(7)}),
              Behind({sps, kTiming}, "refers to PPS 7, which the stream has not carried"));
    // without a message it does not matter; a message without a picture stays
    EXPECT_EQ(Edited(WithRange(true), {sps, Idr(7)}).size(), Joined({sps, Idr(7)}).size() + 1);
    const Bytes delimiter = Unit(kAud, BitString().U(3, 0)).head;
    EXPECT_EQ(
        Edited(WithPicStruct(8), {sps, PpsUnit(0, 0), kTiming, Idr(0), kTiming, delimiter, kTiming}),
        Joined({sps, PpsUnit(0, 0), SeiUnit({1, 2, 0x80, 0x80, 0x80}), Idr(0), kTiming, delimiter, kTiming}));
    EXPECT_EQ(Complaint(WithPicStruct(8), {sps, PpsUnit(0, 0), WithLayer(kTiming, 1), Idr(0)}),
              "it holds no picture timing, and --pic-struct changes what is there");
}

TEST(EditStream, PictureTimingHasToBeReadable) {
    const Bytes sps = SpsUnit(0, VuiWithHrd(32, 32, true));
    EXPECT_EQ(Complaint(WithPicStruct(8), {sps, PpsUnit(0, 0), kTiming, Idr(0)}),
              Behind({sps, PpsUnit(0, 0)}, "cannot parse au_cpb_removal_delay_minus1."));
    // longer than the library takes
    Bytes rbsp = {1, 1, 0x50, 5, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0};
    rbsp.resize(rbsp.size() + 6 * 255, 0x77);
    rbsp.push_back(0x80);
    const std::vector<Bytes> sets = {SpsUnit(0, kFrameFieldInfo), PpsUnit(0, 0)};
    EXPECT_THAT(Complaint(WithPicStruct(8), {sets[0], sets[1], SeiUnit(rbsp), Idr(0)}),
                testing::AnyOf(
                    Behind({sets[0], sets[1]}, "Failed to get SODB from RBSP. Output buffer is too small."),
                    // which the library says once in ten seconds
                    Behind({sets[0], sets[1]},
                           "Deencapsulation cannot be done as InputBufferLength:1543 is "
                           "longer than OutputBufferLength:1512.")));
}

TEST(EditStream, FieldSeqNeedsPicStructsOfFields) {
    EditRequest request = Interlaced();
    request.field_seq = true;
    const std::vector<Bytes> units = {SpsUnit(0, kFrameFieldInfo), PpsUnit(0, 0), kTiming, Idr(0)};
    EXPECT_EQ(Complaint(request, units),
              Behind({units[0], units[1]}, "pic_struct 5 does not fit field_seq_flag 1"));
    request.pic_struct = static_cast<unsigned char>(9);
    const Bytes edited = Edited(request, units);
    EXPECT_EQ(Units(edited)[2].head, SeiUnit({1, 2, 0x90, 0x80, 0x80}));
    EXPECT_TRUE(Parsed(Units(edited)[0].head)->vui.field_seq_flag);

    request.pic_struct.reset();
    EXPECT_EQ(
        Complaint(request, {SpsUnit(0), PpsUnit(0, 0), kTiming, Idr(0)}),
        Behind({SpsUnit(0), PpsUnit(0, 0)},
               "pic_timing would not be understood any more, since frame_field_info_present_flag changes"));
    EXPECT_TRUE(Parsed(Units(Edited(request, {SpsUnit(0), PpsUnit(0, 0), Idr(0)}))[0].head)
                    ->vui.frame_field_info_present_flag);
}

}  // namespace
}  // namespace h265tool
