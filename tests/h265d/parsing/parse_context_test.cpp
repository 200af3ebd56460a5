// Sequence parameter sets through a parse context.

#include <gmock/gmock.h>

#include <cstring>
#include <memory>

#include "h265.h"
#include "support/entry_point.h"
#include "support/nal_unit.h"
#include "support/sps_syntax.h"

namespace test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr char kUnchanged[] = "SPS has not changed no need to parse it again.\n";
constexpr char kFailed[] = "Failed to parse SPS NAL!\n";
constexpr size_t kStore = 1512;  // bytes of LastSPS

class SpsContext : public testing::Test {
 protected:
    // An SPS with that many sub-layers; a `length` fills it up to that many bytes, start code included.
    static Bytes Nal(int sub_layers, size_t length = 0, int start_code_length = 4) {
        const auto unused = std::make_unique<sps_h265_t>();
        SpsSyntax syntax(unused.get());
        syntax.AddSps({.max_sub_layers_minus1 = sub_layers - 1, .vui = 1});
        Bytes nal = NalUnit(33, syntax.bits().Bytes(), start_code_length);
        if (length > 0)
            nal.resize(length, 0xFF);
        return nal;
    }

    // A NAL unit that breaks off, behind sps_video_parameter_set_id 12.
    static Bytes BrokenNal() { return {0, 0, 1, 0x42, 1, 0xC1, 0x00}; }

    BOOL Parse(const Bytes &nal) { return Parse(nal, &sps()); }
    BOOL Parse(const Bytes &nal, sps_h265_t *sps) {
        return H265Lib_Parse_sps_nal_ex(nal.data(), nal.size(), &context(), sps);
    }

    // Whether this parse takes the record from the context: one that no NAL unit gives is put there.
    bool Hits(const Bytes &nal) {
        const auto kept = std::make_unique<sps_h265_t>(context().last_parsed_sps);
        std::memset(&context().last_parsed_sps, 0x5A, sizeof context().last_parsed_sps);
        std::memset(&sps(), kPrefill, sizeof sps());
        SpsSyntax::Prepare(&sps());
        const BOOL parsed = Parse(nal);
        EXPECT_TRUE(parsed);
        const bool hit = sps().seq_parameter_set_id == 0x5A5A5A5A5A5A5A5A;
        EXPECT_EQ(hit, std::memcmp(&sps(), &context().last_parsed_sps, sizeof sps()) == 0 &&
                           sps().before_pic_num_samples_offset == 0x5A5A5A5A);
        if (hit)
            context().last_parsed_sps = *kept;
        return hit;
    }

    void ExpectRemembers(const Bytes &nal) {
        ASSERT_EQ(context().LastSPSLength, nal.size());
        EXPECT_EQ(std::memcmp(context().LastSPS, nal.data(), nal.size()), 0);
        EXPECT_THAT(Bytes(context().LastSPS + nal.size(), context().LastSPS + kStore), Each(0));
        EXPECT_EQ(std::memcmp(&context().last_parsed_sps, &sps(), sizeof sps()), 0);
    }

    // Runs `action`, which has to leave every byte of the context as it was.
    template <typename Action>
    void ExpectContextUnchanged(Action action) {
        const Bytes before = ContextBytes();
        action();
        EXPECT_EQ(ContextBytes(), before);
    }
    Bytes ContextBytes() const {
        const auto *bytes = reinterpret_cast<const unsigned char *>(context_.get());
        return Bytes(bytes, bytes + sizeof *context_);
    }

    H265D_PARSE_CONTEXT &context() { return *context_; }
    sps_h265_t &sps() { return *sps_; }

 private:
    const std::unique_ptr<H265D_PARSE_CONTEXT> context_ = std::make_unique<H265D_PARSE_CONTEXT>();
    const std::unique_ptr<sps_h265_t> sps_ = std::make_unique<sps_h265_t>();
};

TEST_F(SpsContext, TheFirstParseIsRemembered) {
    sps().sps_extension_4bits = 7;  // not coded: it stays, in the context's record as well
    const Bytes nal = Nal(2);
    EXPECT_EQ(Parse(nal), TRUE);
    EXPECT_EQ(sps().sps_max_sub_layers_minus1, 1);
    ExpectRemembers(nal);
    EXPECT_EQ(context().last_parsed_sps.sps_extension_4bits, 7);
}

TEST_F(SpsContext, TheSameBytesAreParsedOnce) {
    const Bytes nal = Nal(2);
    ASSERT_TRUE(Parse(nal));
    EXPECT_TRUE(Hits(nal));
    EXPECT_TRUE(Hits(Bytes(nal)));  // the bytes count, not where they are
    ExpectContextUnchanged([&] {
        const TraceCapture trace;
        EXPECT_EQ(Parse(nal), TRUE);
        EXPECT_THAT(trace.messages(), SizeIs(1));
        EXPECT_THAT(trace.Texts(7), ElementsAre(kUnchanged));
        EXPECT_EQ(trace.messages()[0].function, "H265Lib_Parse_sps_nal_ex");
        EXPECT_EQ(trace.messages()[0].file, "parse_context.cpp");
    });
}

TEST_F(SpsContext, AChangedByteIsParsedAndRemembered) {
    const Bytes longer = Nal(3);
    ASSERT_TRUE(Parse(longer));
    Bytes nal = Nal(2);
    ASSERT_LT(nal.size(), longer.size());
    EXPECT_FALSE(Hits(nal));  // shorter: nothing of the other may stay
    ExpectRemembers(nal);
    nal[6] ^= 0x20;  // sps_video_parameter_set_id
    EXPECT_FALSE(Hits(nal));
    ExpectRemembers(nal);
    nal.back() ^= 0x01;  // behind the last element
    EXPECT_FALSE(Hits(nal));
    ExpectRemembers(nal);
    EXPECT_TRUE(Hits(nal));
}

TEST_F(SpsContext, APrefixIsNotTheSame) {
    ASSERT_TRUE(Parse(Nal(2, 100)));
    EXPECT_FALSE(Hits(Nal(2, 99)));
    EXPECT_FALSE(Hits(Nal(2, 100)));
}

TEST_F(SpsContext, TheStartCodeCounts) {
    ASSERT_TRUE(Parse(Nal(2, 0, 4)));
    EXPECT_FALSE(Hits(Nal(2, 0, 3)));
    ExpectRemembers(Nal(2, 0, 3));
    EXPECT_FALSE(Hits(Nal(2, 0, 4)));
}

TEST_F(SpsContext, AFailureLeavesTheContext) {
    std::memset(&context(), 0x11, sizeof context());
    ASSERT_TRUE(Parse(Nal(2)));
    ExpectContextUnchanged([&] {
        const TraceCapture trace;
        EXPECT_EQ(Parse(BrokenNal()), FALSE);
        EXPECT_THAT(trace.Errors(), ElementsAre("cannot parse general_profile_compatibility_flag[0].\n",
                                                "cannot parse profile_tier_level.\n", kFailed, kFailed));
        const std::vector<TracedMessage> &messages = trace.messages();
        EXPECT_EQ(messages[messages.size() - 2].function, "H265Lib_Parse_sps_nal");
        EXPECT_EQ(messages.back().function, "H265Lib_Parse_sps_nal_ex");
    });
    EXPECT_EQ(sps().sps_video_parameter_set_id, 12);  // the caller's record shows how far it went
    EXPECT_TRUE(Hits(Nal(2)));
}

TEST_F(SpsContext, MalformedFramesFailTwiceOver) {
    ASSERT_TRUE(Parse(Nal(2)));
    const auto parse = [this](const unsigned char *nal, size_t length) {
        return H265Lib_Parse_sps_nal_ex(nal, length, &context(), &sps());
    };
    ExpectContextUnchanged([&] {
        ExpectRefusesMalformedFrames({.parse = parse,
                                      .length_name = "buffer_len",
                                      .no_start_code = "Failed to parse sps nal!",
                                      .longest = 1512,
                                      .added = {kFailed}});
    });
}

TEST_F(SpsContext, AnEmptyContextDoesNotMatchAnEmptyInput) {
    const TraceCapture trace(3);
    EXPECT_EQ(Parse({0}), FALSE);
    context().LastSPSLength = 4;
    EXPECT_EQ(Parse({0, 0, 0, 0}), FALSE);
    EXPECT_THAT(trace.Errors(), ElementsAre("buffer_len:1 is too small. Malformed NAL.\n",
                                            "buffer_len:4 is too small. Malformed NAL.\n"));
}

TEST_F(SpsContext, OnlyTheSpsMembersAreTouched) {
    std::memset(&context(), 0x22, sizeof context());
    ASSERT_TRUE(Parse(Nal(2)));
    const auto expected = std::make_unique<H265D_PARSE_CONTEXT>();
    std::memset(expected.get(), 0x22, sizeof *expected);
    expected->LastSPSLength = context().LastSPSLength;
    std::memcpy(expected->LastSPS, context().LastSPS, sizeof expected->LastSPS);
    std::memcpy(&expected->last_parsed_sps, &context().last_parsed_sps, sizeof expected->last_parsed_sps);
    EXPECT_EQ(std::memcmp(&context(), expected.get(), sizeof *expected), 0);
}

// ---- lengths that the store cannot hold ----------------------------------------------------------------

TEST_F(SpsContext, InputThatFillsTheStoreIsRemembered) {
    const Bytes nal = Nal(2, kStore);
    ASSERT_TRUE(Parse(nal));
    ExpectRemembers(nal);
    EXPECT_TRUE(Hits(nal));
}

TEST_F(SpsContext, LongerInputIsParsedAndNotRemembered) {
    ASSERT_TRUE(Parse(Nal(2)));
    for (const size_t length : {kStore + 1, kStore + 4}) {
        std::memset(&sps(), 0, sizeof sps());
        ExpectContextUnchanged([&] {
            const TraceCapture trace(4);
            EXPECT_EQ(Parse(Nal(3, length)), TRUE);
            EXPECT_EQ(sps().sps_max_sub_layers_minus1, 2);
            EXPECT_THAT(trace.messages(), IsEmpty());
        });
        EXPECT_FALSE(Hits(Nal(3, length)));
        std::memset(&context().last_parsed_sps, 0, sizeof context().last_parsed_sps);
        EXPECT_TRUE(Hits(Nal(2)));
    }
}

TEST_F(SpsContext, AGarbageLengthNeverMatches) {
    const Bytes nal = Nal(2);
    for (const size_t garbage : {nal.size(), size_t{5000}, ~size_t{0}}) {
        std::memset(&context(), 0xC3, sizeof context());
        context().LastSPSLength = garbage;
        EXPECT_FALSE(Hits(nal));
        ExpectRemembers(nal);
    }
}

TEST_F(SpsContext, TheStoreIsNotReadBeyondItsEnd) {
    // what lies behind the store in the context continues a NAL unit that is longer than it
    const Bytes nal = Nal(2, kStore + 4);
    ASSERT_TRUE(Parse(Bytes(nal.begin(), nal.begin() + kStore)));
    context().LastSPSLength = nal.size();
    std::memcpy(&context().LastPPSLength, nal.data() + kStore, 4);
    EXPECT_FALSE(Hits(nal));
}

// ---- the caller's record in the context ----------------------------------------------------------------

TEST_F(SpsContext, TheCallerMayParseRightIntoTheContext) {
    const Bytes nal = Nal(3);
    ASSERT_TRUE(Parse(nal, &context().last_parsed_sps));
    EXPECT_EQ(context().last_parsed_sps.sps_max_sub_layers_minus1, 2);
    EXPECT_EQ(context().LastSPSLength, nal.size());
    ExpectContextUnchanged([&] {
        const TraceCapture trace(7);
        EXPECT_EQ(Parse(nal, &context().last_parsed_sps), TRUE);
        EXPECT_THAT(trace.Texts(7), ElementsAre(kUnchanged));
    });
    EXPECT_TRUE(Hits(nal));
}

// What is left in the context's record then is not what LastSPS was parsed to.
TEST_F(SpsContext, ParsingIntoTheContextForgetsWhatCannotBeRemembered) {
    for (const Bytes &other : {BrokenNal(), Nal(3, kStore + 1)}) {
        ASSERT_TRUE(Parse(Nal(2)));
        const TraceCapture trace(3);
        Parse(other, &context().last_parsed_sps);
        EXPECT_EQ(context().LastSPSLength, 0u);
        std::memset(&sps(), 0, sizeof sps());
        EXPECT_FALSE(Hits(Nal(2)));
        ExpectRemembers(Nal(2));
    }
}

TEST_F(SpsContext, NullArgumentsAreReportedAndFail) {
    const Bytes nal = Nal(1);
    const TraceCapture trace;
    EXPECT_EQ(H265Lib_Parse_sps_nal_ex(nullptr, nal.size(), &context(), &sps()), FALSE);
    EXPECT_EQ(H265Lib_Parse_sps_nal_ex(nal.data(), nal.size(), nullptr, &sps()), FALSE);
    EXPECT_EQ(H265Lib_Parse_sps_nal_ex(nal.data(), nal.size(), &context(), nullptr), FALSE);
    EXPECT_THAT(trace.Assertions(),
                ElementsAre(AssertionOf("buffer != NULL"), AssertionOf("pContext != NULL"),
                            AssertionOf("pSps != NULL")));
    EXPECT_THAT(trace.messages(), SizeIs(3));
}

}  // namespace
}  // namespace test
