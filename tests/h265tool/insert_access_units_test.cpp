// Where access units begin, what is known of them, and what becomes of their NAL units.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "insert/access_units.h"
#include "insert/rewriter.h"
#include "sample_units.h"
#include "unit_error.h"
#include "usage_error.h"

namespace h265tool {
namespace {

using test::BitString;
using test::Bytes;
using ::testing::ElementsAre;

constexpr unsigned int kTrail = 1;

// A slice segment of a picture of 64x64 with the parameter sets of StreamMaker.
BitString SliceOf(unsigned int nal_unit_type, unsigned int slice_type, unsigned int poc_lsb) {
    BitString slice;
    slice.U(1, 1);
    if (IsIrap(nal_unit_type))
        slice.U(1, 0);
    slice.Ue(0).Ue(slice_type);
    return IsIdr(nal_unit_type) ? slice : slice.U(8, poc_lsb);
}

Bytes Nal(unsigned int nal_unit_type, BitString payload) {
    return test::NalUnit(static_cast<int>(nal_unit_type), payload.TrailingBits().Bytes());
}

Bytes Picture(unsigned int nal_unit_type, unsigned int slice_type, unsigned int poc_lsb = 0) {
    return Nal(nal_unit_type, SliceOf(nal_unit_type, slice_type, poc_lsb));
}

const Bytes kSpsUnit = Nal(kSps, Sps({}));
const Bytes kPpsUnit = Nal(kPps, Pps(0, 0));
const Bytes kIdr = Picture(kIdrNLp, 2);
const Bytes kEosUnit = {0, 0, 1, 0x48, 1};
const Bytes kEobUnit = {0, 0, 1, 0x4A, 1};
const Bytes kAudUnit = {0, 0, 0, 1, 0x46, 1, 0x50};
const Bytes kAfdMessage = {4, 9, 0xB5, 0, 0x31, 'D', 'T', 'G', '1', 0x41, 0xF8};
const Bytes kOtherMessage = {137, 2, 0, 0};

Bytes SeiUnit(const std::vector<Bytes> &messages, const Bytes &start = {0, 0, 1, 0x4E, 1}) {
    return Joined({start, Joined(messages), {0x80}});
}

StreamLayout LayoutOf(const Bytes &stream) {
    AccessUnitSplitter splitter;
    NalUnitCollector collector(AccessUnitSplitter::HeadSize,
                               [&splitter](const NalUnit &unit) { splitter.Take(unit); });
    AnnexBScanner scanner(collector);
    scanner.Scan(stream);
    scanner.Finish();
    return splitter.Finish();
}

StreamLayout LayoutOf(const std::vector<Bytes> &units) {
    return LayoutOf(Joined(units));
}

std::vector<uint64_t> FirstUnits(const StreamLayout &layout) {
    std::vector<uint64_t> first;
    for (const AccessUnit &access_unit : layout.access_units)
        first.push_back(access_unit.first_unit);
    return first;
}

std::vector<uint64_t> Presentation(const StreamLayout &layout) {
    std::vector<uint64_t> presentation;
    for (const AccessUnit &access_unit : layout.access_units)
        presentation.push_back(access_unit.presentation);
    return presentation;
}

Bytes Rewritten(const Request &request, const Bytes &stream) {
    const StreamLayout layout = LayoutOf(stream);
    const MessageBuilder messages(request, layout.access_units);
    Bytes out;
    Rewriter rewriter(request, layout, messages, [&out](std::span<const unsigned char> bytes) {
        out.insert(out.end(), bytes.begin(), bytes.end());
    });
    AnnexBScanner scanner(rewriter);
    scanner.Scan(stream);
    scanner.Finish();
    rewriter.Finish(stream.size());
    return out;
}

Request ReplaceAfd() {
    Request request;
    request.active_format = static_cast<unsigned char>(10);
    request.replace = true;
    return request;
}

TEST(AccessUnits, BeginWithWhatMayBeInFrontOfSlices) {
    const Bytes trail = Picture(kTrail, 1, 1);
    const StreamLayout layout =
        LayoutOf({kSpsUnit, kPpsUnit, kIdr, trail, kAudUnit, SeiUnit({kAfdMessage}), trail, kPpsUnit, trail});
    EXPECT_THAT(FirstUnits(layout), ElementsAre(0, 3, 4, 7));
    EXPECT_EQ(layout.access_units[2].first_slice, 6U);
    EXPECT_TRUE(layout.access_units[2].has_delimiter);
    EXPECT_TRUE(layout.access_units[2].Has(SeiKind::kAfd));
    EXPECT_FALSE(layout.access_units[3].has_delimiter);
}

TEST(AccessUnits, EndWithSuffixSeiAndTheLike) {
    const Bytes suffix = SeiUnit({kAfdMessage}, {0, 0, 1, 0x50, 1});
    const Bytes filler = {0, 0, 1, 0x4C, 1, 0xFF, 0x80};
    const StreamLayout layout = LayoutOf({kSpsUnit, kPpsUnit, kIdr, suffix, filler, kIdr});
    EXPECT_THAT(FirstUnits(layout), ElementsAre(0, 5));
    EXPECT_TRUE(layout.access_units[0].Has(SeiKind::kAfd));
}

TEST(AccessUnits, AreNotBegunByOtherLayersOrFurtherSlices) {
    Bytes other_layer = Picture(kTrail, 1, 1);
    other_layer[other_layer[2] == 1 ? 4 : 5] = 9;  // nuh_layer_id 1
    const Bytes segment = Nal(kTrail, BitString().U(1, 0).Ue(0).U(4, 1).Ue(0).U(8, 1));
    const StreamLayout layout =
        LayoutOf({kSpsUnit, kPpsUnit, kIdr, other_layer, Picture(kTrail, 1, 1), segment});
    EXPECT_THAT(FirstUnits(layout), ElementsAre(0, 4));
    EXPECT_EQ(layout.access_units[1].pic_type, 2U);  // of a P slice and a B slice
}

TEST(AccessUnits, KnowTheirSliceTypes) {
    const StreamLayout layout =
        LayoutOf({kSpsUnit, kPpsUnit, kIdr, Picture(kTrail, 1, 2), Picture(kTrail, 0, 1)});
    EXPECT_EQ(layout.access_units[0].pic_type, 0U);
    EXPECT_EQ(layout.access_units[1].pic_type, 1U);
    EXPECT_EQ(layout.access_units[2].pic_type, 2U);
}

TEST(AccessUnits, AreNumberedInTheOrderOfOutput) {
    const auto trail = [](unsigned int poc_lsb) { return Picture(kTrail, 1, poc_lsb); };
    EXPECT_THAT(
        Presentation(LayoutOf({kSpsUnit, kPpsUnit, kIdr, trail(4), trail(2), trail(6), kIdr, trail(1)})),
        ElementsAre(0, 2, 1, 3, 4, 5));
}

TEST(AccessUnits, CountOutputPicturesOnly) {
    const Bytes cra = Picture(kCra, 2, 4);
    const Bytes rasl = Picture(kRaslR, 0, 2);
    const StreamLayout layout = LayoutOf(
        {kSpsUnit, kPpsUnit, cra, rasl, Picture(kCra, 2, 12), Picture(kRaslR, 0, 10), kEosUnit, cra, rasl});
    EXPECT_THAT(Presentation(layout), ElementsAre(0, 0, 2, 1, 3, 3));
    EXPECT_FALSE(layout.access_units[1].is_output);
    EXPECT_TRUE(layout.access_units[3].is_output);
    EXPECT_FALSE(layout.access_units[5].is_output);
}

TEST(AccessUnits, RefuseStreamsThatBeginWithinAPicture) {
    const Bytes segment = Nal(kTrail, BitString().U(1, 0).Ue(0).U(4, 1).Ue(0).U(8, 1));
    EXPECT_THROW(LayoutOf({kSpsUnit, kPpsUnit, segment}), UnitError);
    EXPECT_THROW(LayoutOf({kSpsUnit, kPpsUnit}), UnitError);
    EXPECT_THROW(LayoutOf({kSpsUnit, kIdr}), UnitError);
}

TEST(AccessUnits, TellWhereTheSequenceEnds) {
    EXPECT_EQ(LayoutOf({kSpsUnit, kPpsUnit, kIdr}).end_of_sequence, 3U);
    EXPECT_EQ(LayoutOf({kSpsUnit, kPpsUnit, kIdr, kEobUnit}).end_of_sequence, 3U);
    EXPECT_EQ(LayoutOf({kSpsUnit, kPpsUnit, kIdr, kEosUnit}).end_of_sequence, std::nullopt);
    EXPECT_EQ(LayoutOf({kSpsUnit, kPpsUnit, kIdr, kEosUnit, kIdr}).end_of_sequence, 5U);
}

TEST(Placement, OfADelimiterIsInFrontOfAll) {
    Request request;
    request.delimiters = true;
    request.end_of_sequence = true;
    const Bytes zeros = {0, 0, 0, 0};
    const Bytes idr_delimiter = {0, 0, 0, 1, 0x46, 1, 0x10};
    EXPECT_EQ(
        Rewritten(request, Joined({kSpsUnit, kPpsUnit, kIdr, zeros, kAudUnit, kIdr, zeros, kEobUnit, zeros})),
        Joined({idr_delimiter,
                kSpsUnit,
                kPpsUnit,
                kIdr,
                zeros,
                kAudUnit,
                kIdr,
                {0, 0, 0},
                kEosUnit,
                {0},
                kEobUnit,
                zeros}));
    request.replace = true;
    EXPECT_EQ(Rewritten(request, Joined({kSpsUnit, kPpsUnit, kAudUnit, kIdr})),
              Joined({idr_delimiter, kSpsUnit, kPpsUnit, kIdr, kEosUnit}));
}

TEST(Placement, OfAMessageIsInFrontOfTheFirstSlice) {
    const Bytes afd = {0, 0, 1, 0x4E, 1, 4, 9, 0xB5, 0, 0x31, 'D', 'T', 'G', '1', 0x41, 0xFA, 0x80};
    const Bytes other = SeiUnit({kOtherMessage});
    const Request request = ReplaceAfd();
    EXPECT_EQ(Rewritten(request, Joined({kSpsUnit, kPpsUnit, other, kIdr})),
              Joined({kSpsUnit, kPpsUnit, other, afd, kIdr}));
    // as the first NAL unit of its access unit, with a zero_byte
    EXPECT_EQ(Rewritten(request, Joined({kSpsUnit, kPpsUnit, kIdr, kIdr})),
              Joined({kSpsUnit, kPpsUnit, afd, kIdr, {0}, afd, kIdr}));
}

TEST(Placement, ReplacesMessageByMessage) {
    const Bytes afd = {0, 0, 1, 0x4E, 1, 4, 9, 0xB5, 0, 0x31, 'D', 'T', 'G', '1', 0x41, 0xFA, 0x80};
    const Bytes zeros_message = {137, 4, 0, 0, 3, 1, 5};  // written with emulation prevention
    EXPECT_EQ(Rewritten(ReplaceAfd(),
                        Joined({kSpsUnit, kPpsUnit, SeiUnit({zeros_message, kAfdMessage, {6, 1, 7}}), kIdr})),
              Joined({kSpsUnit, kPpsUnit, SeiUnit({zeros_message, {6, 1, 7}}), afd, kIdr}));
    // what comes to stand first gets a zero_byte
    const Bytes first = SeiUnit({kAfdMessage}, {0, 0, 0, 1, 0x4E, 1});
    EXPECT_EQ(
        Rewritten(ReplaceAfd(), Joined({kSpsUnit, kPpsUnit, kIdr, first, SeiUnit({kOtherMessage}), kIdr})),
        Joined({kSpsUnit, kPpsUnit, afd, kIdr, {0}, SeiUnit({kOtherMessage}), afd, kIdr}));
}

TEST(Placement, KeepsWhatIsThereUnlessItIsReplaced) {
    Request request = ReplaceAfd();
    request.replace = false;
    const Bytes stream = Joined({kSpsUnit, kPpsUnit, SeiUnit({kAfdMessage}), kIdr});
    EXPECT_EQ(Rewritten(request, stream), stream);
}

TEST(Placement, LeavesSeiAloneThatCannotBeRead) {
    const Bytes broken = SeiUnit({{4, 200, 0xB5}});
    const Bytes stream = Joined({kSpsUnit, kPpsUnit, broken, kIdr, kIdr});
    Request request;
    request.replace = true;
    request.precision_time = 0;
    request.rate = Rate{25, 1};
    const Bytes out = Rewritten(request, stream);
    EXPECT_EQ(out.size(), stream.size() + 36 + 37);
    EXPECT_TRUE(std::equal(broken.begin(), broken.end(),
                           out.begin() + static_cast<std::ptrdiff_t>(kSpsUnit.size() + kPpsUnit.size())));
}

TEST(Placement, NeedsARateWhenTheStreamTellsNone) {
    Request request;
    request.precision_time = 0;
    EXPECT_THROW(Rewritten(request, Joined({kSpsUnit, kPpsUnit, kIdr})), UsageError);
}

TEST(Placement, GivesMessagesTheTemporalIdOfThePicture) {
    Bytes trail = Picture(kTrail, 1, 1);
    trail[trail[2] == 1 ? 4 : 5] = 3;
    const Bytes out = Rewritten(ReplaceAfd(), Joined({kSpsUnit, kPpsUnit, kIdr, trail}));
    const Bytes header = {0, 0, 0, 1, 0x4E, 3, 4, 9};
    EXPECT_NE(std::search(out.begin(), out.end(), header.begin(), header.end()), out.end());
}

}  // namespace
}  // namespace h265tool
