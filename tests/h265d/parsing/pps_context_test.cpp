// Picture parameter sets through a parse context.

#include <gmock/gmock.h>

#include <cstring>
#include <memory>

#include "h265.h"
#include "support/bit_string.h"
#include "support/nal_unit.h"
#include "support/silence.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kUnchanged[] = "PPS has not changed no need to parse it again.\n";
constexpr char kFailed[] = "Failed to parse PPS NAL!\n";

class PpsContext : public testing::Test {
 protected:
    PpsContext() : context_(std::make_unique<H265D_PARSE_CONTEXT>()) {}

    // A PPS with the id; a `length` fills it up to that many bytes, start code included.
    static Bytes Nal(uint64_t id, size_t length = 0, int start_code_length = 4) {
        BitString bits;
        bits.Ue(id).Ue(0).U(7, 0).Ue(0).Ue(0).Se(0).U(3, 0);     // up to cu_qp_delta_enabled_flag
        bits.Se(0).Se(0).U(10, 0).Ue(0).U(2, 0).TrailingBits();  // up to pps_extension_present_flag
        Bytes nal = NalUnit(34, bits.Bytes(), start_code_length);
        if (length > 0)
            nal.resize(length, 0xFF);
        return nal;
    }

    // A NAL unit that breaks off.
    static Bytes BrokenNal() { return {0, 0, 1, 0x44, 1, 0xC0}; }

    BOOL Parse(const Bytes &nal) { return Parse(nal, &pps_); }
    BOOL Parse(const Bytes &nal, pps_h265_t *pps) {
        return H265Lib_Parse_pps_nal_ex(nal.data(), static_cast<unsigned int>(nal.size()), context_.get(),
                                        pps);
    }

    // Gives the cached record a mark that no parse gives.
    void MarkCachedRecord() { context_->last_parsed_pps.pps_seq_parameter_set_id = kMark; }

    // Whether this parse takes the record from the cache.
    bool Hits(const Bytes &nal) {
        MarkCachedRecord();
        pps_h265_t pps{};
        return Parse(nal, &pps) && pps.pps_seq_parameter_set_id == kMark;
    }

    void ExpectCached(const Bytes &nal) const {
        ASSERT_EQ(context_->LastPPSLength, nal.size());
        EXPECT_EQ(std::memcmp(context_->LastPPS, nal.data(), nal.size()), 0);
    }

    static constexpr UINT64 kMark = 77'777;

    std::unique_ptr<H265D_PARSE_CONTEXT> context_;
    pps_h265_t pps_{};
};

TEST_F(PpsContext, AParsedPpsIsRemembered) {
    std::memset(context_->LastPPS, 0xEE, sizeof context_->LastPPS);
    const Bytes nal = Nal(3);
    const TraceCapture trace(6);
    EXPECT_TRUE(Parse(nal));
    EXPECT_EQ(pps_.pps_pic_parameter_set_id, 3u);
    EXPECT_THAT(trace.messages(), IsEmpty());
    ExpectCached(nal);
    for (size_t i = nal.size(); i < sizeof context_->LastPPS; i++)
        EXPECT_EQ(context_->LastPPS[i], 0);
    EXPECT_EQ(std::memcmp(&context_->last_parsed_pps, &pps_, sizeof pps_), 0);
}

TEST_F(PpsContext, AnUnchangedPpsIsTakenFromTheContext) {
    ASSERT_TRUE(Parse(Nal(3)));
    MarkCachedRecord();
    const auto before = std::make_unique<H265D_PARSE_CONTEXT>(*context_);
    std::memset(&pps_, 0x5A, sizeof pps_);
    const TraceCapture trace;
    EXPECT_TRUE(Parse(Nal(3)));
    EXPECT_EQ(std::memcmp(&pps_, &before->last_parsed_pps, sizeof pps_), 0);
    EXPECT_EQ(std::memcmp(context_.get(), before.get(), sizeof *before), 0);
    ASSERT_EQ(trace.messages().size(), 1u);
    EXPECT_THAT(trace.Texts(7), ElementsAre(kUnchanged));
    EXPECT_EQ(trace.messages()[0].function, "H265Lib_Parse_pps_nal_ex");
}

TEST_F(PpsContext, AnyDifferenceIsParsed) {
    const Bytes nal = Nal(3);
    Bytes last_byte_changed = Nal(3, nal.size() + 1);
    last_byte_changed.back() ^= 1;
    for (const Bytes &other :
         {Nal(4), Nal(3, 0, 3), Nal(3, nal.size() + 1), Nal(3, nal.size() + 2), last_byte_changed}) {
        *context_ = {};
        ASSERT_TRUE(Parse(Nal(3, nal.size() + 2)) && Parse(Nal(3, nal.size() + 1)) && Parse(nal));
        EXPECT_FALSE(Hits(other));
        ExpectCached(other);
        EXPECT_EQ(context_->last_parsed_pps.pps_seq_parameter_set_id, 0u);
        EXPECT_TRUE(Hits(other));
        EXPECT_FALSE(Hits(nal));
    }
}

TEST_F(PpsContext, AFailureIsReportedTwiceAndKeepsTheContext) {
    ASSERT_TRUE(Parse(Nal(3)));
    const auto before = std::make_unique<H265D_PARSE_CONTEXT>(*context_);
    {
        const TraceCapture trace(3);
        EXPECT_FALSE(Parse(BrokenNal()));
        EXPECT_THAT(trace.Errors(), ElementsAre("cannot parse cabac_init_present_flag.\n", kFailed, kFailed));
        EXPECT_EQ(trace.messages()[1].function, "H265Lib_Parse_pps_nal");
        EXPECT_EQ(trace.messages()[2].function, "H265Lib_Parse_pps_nal_ex");
    }
    InSilence([this] { EXPECT_FALSE(Parse(BrokenNal())); });
    EXPECT_EQ(std::memcmp(context_.get(), before.get(), sizeof *before), 0);
    EXPECT_TRUE(Hits(Nal(3)));
}

TEST_F(PpsContext, TheStoreHolds256Bytes) {
    EXPECT_FALSE(Hits(Nal(3, 256)));
    ExpectCached(Nal(3, 256));
    EXPECT_TRUE(Hits(Nal(3, 256)));
}

TEST_F(PpsContext, LongerInputIsParsedAndNotRemembered) {
    const Bytes remembered = Nal(3, 256);
    ASSERT_TRUE(Parse(remembered));
    MarkCachedRecord();
    const auto before = std::make_unique<H265D_PARSE_CONTEXT>(*context_);
    for (size_t length = 257; length <= 260; length++) {
        SCOPED_TRACE(length);
        EXPECT_TRUE(Parse(Nal(length, length)));
        EXPECT_EQ(pps_.pps_pic_parameter_set_id, length);
        EXPECT_EQ(pps_.pps_seq_parameter_set_id, 0u);
        EXPECT_EQ(std::memcmp(context_.get(), before.get(), sizeof *before), 0);
        EXPECT_FALSE(Hits(Nal(length, length)));
    }
    EXPECT_TRUE(Hits(remembered));
}

TEST_F(PpsContext, ALengthThatNoStoreHasNeverHits) {
    const Bytes nal = Nal(3, 257);
    context_->LastPPSLength = nal.size();
    std::memcpy(context_->LastPPS, nal.data(), sizeof context_->LastPPS);
    std::memset(&context_->last_parsed_vps, nal.back(), sizeof context_->last_parsed_vps);  // lies behind it
    EXPECT_FALSE(Hits(nal));
}

TEST_F(PpsContext, ARecordOfTheContextItselfMayBeTheDestination) {
    for (const uint64_t id : {3u, 4u}) {
        EXPECT_TRUE(Parse(Nal(id), &context_->last_parsed_pps));
        EXPECT_EQ(context_->last_parsed_pps.pps_pic_parameter_set_id, id);
        ExpectCached(Nal(id));
    }
    MarkCachedRecord();
    EXPECT_TRUE(Parse(Nal(4), &context_->last_parsed_pps));
    EXPECT_EQ(context_->last_parsed_pps.pps_seq_parameter_set_id, kMark);
    EXPECT_TRUE(Hits(Nal(4)));
}

// What is left in the context's record then is not what LastPPS was parsed to.
TEST_F(PpsContext, ParsingIntoTheContextForgetsWhatCannotBeRemembered) {
    for (const Bytes &other : {BrokenNal(), Nal(4, 257)}) {
        ASSERT_TRUE(Parse(Nal(3)));
        const TraceCapture trace(3);
        Parse(other, &context_->last_parsed_pps);
        EXPECT_EQ(context_->LastPPSLength, 0u);
        EXPECT_FALSE(Hits(Nal(3)));
        ExpectCached(Nal(3));
    }
}

TEST_F(PpsContext, ShortInputIsRefusedInFrontOfTheComparison) {
    const Bytes nal = {0, 0, 0, 1};
    context_->LastPPSLength = nal.size();
    std::memcpy(context_->LastPPS, nal.data(), nal.size());
    TraceCapture trace;
    EXPECT_FALSE(Parse(nal));
    EXPECT_THAT(trace.Errors(), ElementsAre("buffer_len:4 is too small. Malformed NAL.\n"));
    EXPECT_EQ(trace.messages().size(), 1u);
    EXPECT_EQ(trace.messages()[0].function, "H265Lib_Parse_pps_nal_ex");

    trace.Clear();
    EXPECT_FALSE(H265Lib_Parse_pps_nal_ex(nal.data(), 0, context_.get(), &pps_));
    EXPECT_THAT(trace.Errors(), ElementsAre("buffer_len:0 is too small. Malformed NAL.\n"));
    InSilence([&] { EXPECT_FALSE(Parse(nal)); });
}

TEST_F(PpsContext, ALengthBeyondASignedOneIsRefusedByTheParse) {
    const Bytes nal = Nal(3);
    const TraceCapture trace(3);
    EXPECT_FALSE(H265Lib_Parse_pps_nal_ex(nal.data(), 0xFFFF'FFFF, context_.get(), &pps_));
    EXPECT_THAT(trace.Errors(), ElementsAre("buffer_len:-1 is too small. Malformed NAL.\n", kFailed));
}

TEST_F(PpsContext, NullArgumentsAreReportedAndFail) {
    const Bytes nal = Nal(3);
    const auto length = static_cast<unsigned int>(nal.size());
    struct Case {
        const unsigned char *buffer;
        H265D_PARSE_CONTEXT *context;
        pps_h265_t *pps;
        const char *expression;
    };
    for (const Case &c : {Case{nullptr, context_.get(), &pps_, "buffer != NULL"},
                          Case{nal.data(), nullptr, &pps_, "pContext != NULL"},
                          Case{nal.data(), context_.get(), nullptr, "pps != NULL"}}) {
        const TraceCapture trace;
        EXPECT_FALSE(H265Lib_Parse_pps_nal_ex(c.buffer, length, c.context, c.pps));
        EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf(c.expression)));
        ASSERT_EQ(trace.messages().size(), 1u);
        EXPECT_EQ(trace.messages()[0].function, "H265Lib_Parse_pps_nal_ex");
    }
    EXPECT_EQ(context_->LastPPSLength, 0u);
}

}  // namespace
}  // namespace test
