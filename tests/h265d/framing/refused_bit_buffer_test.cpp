// A bit buffer service that refuses to open a buffer: every function that opens one says so and fails, and
// the caller's buffers stay.

#include <gmock/gmock.h>

#include <climits>
#include <cstring>

#include "h265.h"
#include "support/interposed_services.h"
#include "support/nal_unit.h"
#include "support/silence.h"

namespace test {
namespace {

constexpr char kRefused[] = "Failed to init Bitbuffer.\n";

const Bytes kInput = {0, 0, 0, 1, 0x40, 1, 0x0C, 1, 0xFF, 0xFF, 0x80};

template <typename Record>
Record *Zeroed() {
    static Record record;
    record = {};
    return &record;
}

using Rewrite = BOOL (*)(const unsigned char *, unsigned int, const sps_h265_t *, unsigned char **, UINT *);

// The outputs are as on other failures in front of the rewriting: untouched.
BOOL RewriteSps(Rewrite rewrite, const Bytes &nal) {
    unsigned char untouched = 0;
    unsigned char *buffer = &untouched;
    UINT length = 77;
    const BOOL result =
        rewrite(nal.data(), static_cast<UINT>(nal.size()), Zeroed<sps_h265_t>(), &buffer, &length);
    EXPECT_EQ(buffer, &untouched);
    EXPECT_EQ(length, 77u);
    return result;
}

struct Opener {
    const char *function;
    int refused;  // the bit buffer that is refused, from 1
    BOOL (*call)(Bytes *nal);
};

const Opener kOpeners[] = {
    {"H265Lib_Parse_au_delimiter_nal", 1,
     [](Bytes *nal) {
         return H265Lib_Parse_au_delimiter_nal(nal->data(), static_cast<int>(nal->size()),
                                               Zeroed<aud_h265_t>());
     }},
    {"H265Lib_Parse_vps_nal", 1,
     [](Bytes *nal) { return H265Lib_Parse_vps_nal(nal->data(), nal->size(), Zeroed<vps_h265_t>()); }},
    {"H265Lib_Parse_sps_nal", 1,
     [](Bytes *nal) { return H265Lib_Parse_sps_nal(nal->data(), nal->size(), Zeroed<sps_h265_t>()); }},
    {"H265Lib_Parse_pps_nal", 1,
     [](Bytes *nal) {
         return H265Lib_Parse_pps_nal(nal->data(), static_cast<int>(nal->size()), Zeroed<pps_h265_t>());
     }},
    {"H265Lib_Parse_slice_header_nal", 1,
     [](Bytes *nal) {
         return H265Lib_Parse_slice_header_nal(nal->data(), static_cast<int>(nal->size()),
                                               Zeroed<sps_h265_t>(), Zeroed<pps_h265_t>(),
                                               Zeroed<ssh_h265_t>());
     }},
    {"H265Lib_Parse_sei_pictiming_nal", 1,
     [](Bytes *nal) {
         return H265Lib_Parse_sei_pictiming_nal(nal->data(), static_cast<int>(nal->size()),
                                                Zeroed<SEI_message_t>(), Zeroed<vui_h265_t>(),
                                                Zeroed<sei_h265_pic_timing_t>());
     }},
    {"H265Lib_Parse_sei_timecode_nal", 1,
     [](Bytes *nal) {
         return H265Lib_Parse_sei_timecode_nal(nal->data(), static_cast<int>(nal->size()),
                                               Zeroed<SEI_message_t>(), Zeroed<sei_h265_time_code_t>());
     }},
    {"H265Lib_modify_sps_NAL", 1, [](Bytes *nal) { return RewriteSps(H265Lib_modify_sps_NAL, *nal); }},
    {"H265Lib_modify_sps_NAL", 2, [](Bytes *nal) { return RewriteSps(H265Lib_modify_sps_NAL, *nal); }},
    {"H265Lib_Set_sps_vui_parameters_NAL", 1,
     [](Bytes *nal) { return RewriteSps(H265Lib_Set_sps_vui_parameters_NAL, *nal); }},
    {"H265Lib_Set_sps_vui_parameters_NAL", 2,
     [](Bytes *nal) { return RewriteSps(H265Lib_Set_sps_vui_parameters_NAL, *nal); }},
    {"H265Lib_modify_vps_NAL", 1,
     [](Bytes *nal) { return H265Lib_modify_vps_NAL(nal->data(), static_cast<unsigned int>(nal->size())); }},
    {"H265Lib_modify_pictiming_sei_NAL", 1,
     [](Bytes *nal) {
         UINT length = static_cast<UINT>(nal->size());
         const BOOL result = H265Lib_modify_pictiming_sei_NAL(nal->data(), &length, Zeroed<vui_h265_t>(), 2,
                                                              Zeroed<sei_h265_pic_timing_t>());
         EXPECT_EQ(length, nal->size());
         return result;
     }},
    {"H265Lib_format_sei_pictiming_nal", 1,
     [](Bytes *) {
         Bytes buffer(40, 0xA5);
         UINT length = 40;
         const BOOL result = H265Lib_format_sei_pictiming_nal(buffer.data(), &length, Zeroed<vui_h265_t>(),
                                                              Zeroed<sei_h265_pic_timing_t>());
         EXPECT_EQ(length, 40u);
         EXPECT_EQ(buffer, Bytes(40, 0xA5));
         return result;
     }},
};

void PrintTo(const Opener &opener, std::ostream *out) {
    *out << opener.function;
}

class RefusedBitBuffer : public testing::TestWithParam<Opener> {
 protected:
    static void ExpectFailure() {
        Bytes nal = kInput;
        const RefusedBitBuffers refused(GetParam().refused);
        EXPECT_EQ(GetParam().call(&nal), FALSE);
        EXPECT_EQ(nal, kInput);
    }
};

TEST_P(RefusedBitBuffer, FailsTheCall) {
    const TraceCapture trace(3);
    ExpectFailure();
    EXPECT_THAT(trace.Errors(), testing::ElementsAre(kRefused));
    EXPECT_EQ(trace.messages().size(), 1u);
    EXPECT_EQ(trace.messages()[0].function, GetParam().function);
}

TEST_P(RefusedBitBuffer, FailsTheCallInSilence) {
    InSilence(ExpectFailure);
}

INSTANTIATE_TEST_SUITE_P(Openers, RefusedBitBuffer, testing::ValuesIn(kOpeners), [](const auto &opener) {
    return opener.param.function + std::string(opener.param.refused == 1 ? "" : "_second");
});

// The assembly of a time code goes on, and ends behind the NAL unit header.
TEST(RefusedBitBufferOfATimeCode, LeavesANalUnitOfItsHeader) {
    SEI_time_code_info_t info{};
    info.pParsedSps = Zeroed<sps_h265_t>();
    const vitc_t vitc{};
    const auto expect_header = [&] {
        Bytes buffer(36, 0xA5);
        const RefusedBitBuffers refused(1);
        EXPECT_EQ(H265Lib_format_sei_time_code_nal(buffer.data(), 36, &vitc, &info), 5);
        Bytes expected(36, 0xA5);
        std::memcpy(expected.data(), "\0\0\1\x4E\1", 5);
        EXPECT_EQ(buffer, expected);
    };
    {
        const TraceCapture trace(3);
        expect_header();
        EXPECT_THAT(trace.Errors(),
                    testing::ElementsAre("Failed to init Bitbuffer.", "Failed to set payload type:136.\n",
                                         "Failed to set SEI time_code elements.", "Encapsulation failed!\n"));
    }
    InSilence(expect_header);
}

// From 2^29 bytes on a length in bits does not fit its type.
TEST(SodbOfTooManyBits, FailsTheCall) {
    for (const int length : {1 << 29, (1 << 29) + 1, INT_MAX}) {
        const PretendedSodbLength pretended(length);
        const TraceCapture trace(3);
        EXPECT_EQ(H265Lib_Parse_sps_nal(kInput.data(), kInput.size(), Zeroed<sps_h265_t>()), FALSE);
        EXPECT_THAT(trace.Errors(), testing::ElementsAre(kRefused));
    }
}

// A slice header is read from the first bytes of its NAL unit, but not when the NAL unit is too long for a
// cursor.
TEST(SodbOfTooManyBits, FailsTheCallOfWhichAFewWouldDo) {
    constexpr int kTooMany = 1 << 29;
    const auto input_length = [](int nal_length) {
        const PretendedSodbLength pretended(kTooMany);
        const TraceCapture trace(3);
        EXPECT_EQ(H265Lib_Parse_slice_header_nal(kInput.data(), nal_length, Zeroed<sps_h265_t>(),
                                                 Zeroed<pps_h265_t>(), Zeroed<ssh_h265_t>()),
                  FALSE);
        EXPECT_THAT(trace.Errors(), testing::ElementsAre(kRefused));
        return pretended.InputLength();
    };
    EXPECT_EQ(input_length(kTooMany), kTooMany - 4u);
    EXPECT_LT(input_length(kTooMany - 1), 1000u);
}

}  // namespace
}  // namespace test
