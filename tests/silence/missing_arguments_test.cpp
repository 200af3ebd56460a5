// Every function with nothing but null pointers: each pointer is reported, the call fails, and it fails as
// well when there is no channel to report on.

#include <gmock/gmock.h>

#include <climits>

#include "h265.h"
#include "h265/sei/pic_timing.h"
#include "h265/sei/time_code.h"
#include "h265/sei/user_data.h"
#include "h265d/display/sub_structures.h"
#include "h265d/framing/au_delimiter.h"
#include "h265d/framing/nal_type_offset.h"
#include "h265d/parsing/hrd.h"
#include "h265d/parsing/pps.h"
#include "h265d/parsing/profile_tier_level.h"
#include "h265d/parsing/scaling_list.h"
#include "h265d/parsing/short_term_ref_pic_set.h"
#include "h265d/parsing/slice_header.h"
#include "h265d/parsing/sps.h"
#include "h265d/parsing/vps.h"
#include "h265d/parsing/vui.h"
#include "h265d/rewriting/hrd.h"
#include "h265d/rewriting/pic_timing.h"
#include "h265d/rewriting/sps.h"
#include "h265d/rewriting/vps.h"
#include "h265d/sei/message_scan.h"
#include "h265d/sei/pic_timing.h"
#include "h265d/sei/time_code.h"
#include "support/silence.h"
#include "support/trace_capture.h"

namespace test {
namespace {

// What a function gives that returns nothing.
constexpr int kNothing = 0;

// A text in the name of a function.
using Report = std::pair<std::string, std::string>;

struct Function {
    const char *name;
    int (*call)();
    int result;
    std::vector<std::string> assertions;
    std::vector<std::string> errors = {};
    std::vector<Report> in_between = {};  // of functions that it calls, mostly
};

Report Assertion(const char *function, const std::string &expression) {
    return {function, AssertionOf(expression)};
}

void PrintTo(const Function &function, std::ostream *out) {
    *out << function.name;
}

class MissingArguments : public testing::TestWithParam<Function> {};

TEST_P(MissingArguments, AreReported) {
    const Function &function = GetParam();
    std::vector<Report> expected;
    for (const std::string &expression : function.assertions)
        expected.push_back(Assertion(function.name, expression));
    expected.insert(expected.end(), function.in_between.begin(), function.in_between.end());
    for (const std::string &error : function.errors)
        expected.emplace_back(function.name, error);

    const TraceCapture trace;
    EXPECT_EQ(function.call(), function.result);
    std::vector<Report> reports;
    for (const TracedMessage &message : trace.messages())
        reports.emplace_back(message.function, message.text);
    EXPECT_EQ(reports, expected);
}

TEST_P(MissingArguments, FailInSilence) {
    InSilence([] { EXPECT_EQ(GetParam().call(), GetParam().result); });
}

// What the search for a start code reports of no NAL unit, and of its length.
const Report kNoNal = Assertion("_GetNALTypeOffset", "pBuffer != NULL");
const Report kShortNal = Assertion("_GetNALTypeOffset", "buffer_len >= 4");

const Report kShortForTimeCode = {"_AssembleTimecodeSEI",
                                  "Received buffer len:0 is smaller than actual size of SEI:36.\n"};

// ---- framing
// -----------------------------------------------------------------------------------------------

const Function kFraming[] = {
    {"_GetNALTypeOffset",
     [] { return _GetNALTypeOffset(nullptr, 0, nullptr); },
     FALSE,
     {"pBuffer != NULL", "buffer_len >= 4", "pnOffset != NULL"}},
    {"H265Lib_SODB_deencapsulation_from_NAL",
     [] { return H265Lib_SODB_deencapsulation_from_NAL(nullptr, 0, nullptr, 0); },
     -1,
     {"input_buf != NULL", "output_buf != NULL"}},
    {"_parse_aud",
     [] { return _parse_aud(nullptr, nullptr); },
     FALSE,
     {},
     {"Failed to parse aud NAL! aud_bb:(nil), aud_data:(nil).\n"}},
    {"H265Lib_Parse_au_delimiter_nal",
     [] { return H265Lib_Parse_au_delimiter_nal(nullptr, 0, nullptr); },
     FALSE,
     {},
     {"Failed to parse aud NAL! buffer:(nil).\n"}},
    {"H265Lib_format_au_delimiter_nalu",
     [] { return H265Lib_format_au_delimiter_nalu(nullptr, 9, 0); },
     -1,
     {},
     {"ERROR - buffer:(nil) should not be NULL or len:9, should be greater than 8!\n"}},
    {"H265Lib_format_end_of_sequence_nalu",
     [] { return H265Lib_format_end_of_sequence_nalu(nullptr, 9); },
     -1,
     {},
     {"ERROR - buffer:(nil) should not be NULL or len:9, should be greater than 5!\n"}},
};
INSTANTIATE_TEST_SUITE_P(Framing, MissingArguments, testing::ValuesIn(kFraming));

// ---- parsing
// -----------------------------------------------------------------------------------------------

const Function kParsing[] = {
    {"_parse_vps", [] { return _parse_vps(nullptr, nullptr); }, -1, {"vps_nalu_bb != NULL", "pVps != NULL"}},
    {"_parse_sps", [] { return _parse_sps(nullptr, nullptr); }, -1, {}},
    {"_parse_pps", [] { return _parse_pps(nullptr, nullptr); }, -1, {}},
    {"_parse_profile_tier_level",
     [] { return _parse_profile_tier_level(nullptr, 0, nullptr); },
     -1,
     {"sps_nalu_bb != NULL", "ptl != NULL"}},
    {"_parse_scaling_list", [] { return _parse_scaling_list(nullptr, nullptr); }, -1, {}},
    {"_parse_short_term_ref_pic_set",
     [] { return _parse_short_term_ref_pic_set(nullptr, 1, 0, nullptr, nullptr); },
     -1,
     {}},
    {"_parse_vui_parameters", [] { return _parse_vui_parameters(nullptr, 0, nullptr); }, -1, {}},
    {"_parse_hrd",
     [] { return _parse_hrd(nullptr, 1, 0, nullptr, nullptr); },
     -1,
     {"sps_nalu_bb != NULL", "pCpbDpbDelaysPresentFlag != NULL", "pHrd != NULL"}},
    {"_parse_sub_layer_hrd_parameters",
     [] { return _parse_sub_layer_hrd_parameters(nullptr, 0, 0, nullptr); },
     -1,
     {"sps_nalu_bb != NULL", "slhp != NULL"}},
    {"_parse_slice_header",
     [] { return _parse_slice_header(nullptr, nullptr, nullptr, 1, nullptr); },
     -1,
     {},
     {"pNal_bb:(nil) or sliceheader:(nil) are NULL this should not happen!\n"}},
    {"H265Lib_Parse_vps_nal",
     [] { return H265Lib_Parse_vps_nal(nullptr, 0, nullptr); },
     FALSE,
     {"pBuffer != NULL", "BufferLen > 0", "pVps != NULL"},
     {"BufferLen:0 is too small. Malformed NAL.\n"}},
    {"H265Lib_Parse_sps_nal",
     [] { return H265Lib_Parse_sps_nal(nullptr, 0, nullptr); },
     FALSE,
     {"buffer != NULL", "pSps != NULL"},
     {"buffer_len:0 is too small. Malformed NAL.\n"}},
    {"H265Lib_Parse_pps_nal",
     [] { return H265Lib_Parse_pps_nal(nullptr, 0, nullptr); },
     FALSE,
     {"buffer != NULL", "pps != NULL"},
     {"buffer_len:0 is too small. Malformed NAL.\n"}},
    {"H265Lib_Parse_sps_nal_ex",
     [] { return H265Lib_Parse_sps_nal_ex(nullptr, 0, nullptr, nullptr); },
     FALSE,
     {"buffer != NULL", "pContext != NULL", "pSps != NULL"},
     {"buffer_len:0 is too small. Malformed NAL.\n"}},
    {"H265Lib_Parse_pps_nal_ex",
     [] { return H265Lib_Parse_pps_nal_ex(nullptr, 0, nullptr, nullptr); },
     FALSE,
     {"buffer != NULL", "pContext != NULL", "pps != NULL"},
     {"buffer_len:0 is too small. Malformed NAL.\n"}},
    {"H265Lib_Parse_slice_header_nal",
     [] { return H265Lib_Parse_slice_header_nal(nullptr, 0, nullptr, nullptr, nullptr); },
     FALSE,
     {},
     {"buffer:(nil) or slice header:(nil) are NULL. This should not happen!\n"}},
};
INSTANTIATE_TEST_SUITE_P(Parsing, MissingArguments, testing::ValuesIn(kParsing));

// ---- displays
// ----------------------------------------------------------------------------------------------

const Function kDisplays[] = {
    {"H265Lib_Display_vps",
     [] {
         H265Lib_Display_vps(nullptr);
         return kNothing;
     },
     kNothing,
     {"vps != NULL"}},
    {"H265Lib_Display_sps",
     [] {
         H265Lib_Display_sps(nullptr);
         return kNothing;
     },
     kNothing,
     {"sps != NULL"}},
    {"H265Lib_Display_pps",
     [] {
         H265Lib_Display_pps(nullptr);
         return kNothing;
     },
     kNothing,
     {"pps != NULL"}},
    {"H265Lib_Display_sei_pictiming",
     [] {
         H265Lib_Display_sei_pictiming(nullptr, nullptr);
         return kNothing;
     },
     kNothing,
     {"pPt != NULL"}},
    {"_display_profile_tier_level",
     [] {
         _display_profile_tier_level(nullptr, 0);
         return kNothing;
     },
     kNothing,
     {"ptl != NULL"}},
    {"_display_scaling_list_data",
     [] { return _display_scaling_list_data(nullptr); },
     0,
     {"sld != NULL"},
     {"Scaling list Data:(nil) parsing is NOT done at the moment.\n"}},
    {"_display_short_term_ref_pic_set",
     [] { return _display_short_term_ref_pic_set(nullptr, 1, 0, nullptr); },
     0,
     {"strps != NULL", "StRpsIndex <= NumShortTermRefPicSets"}},
    {"_display_vui",
     [] {
         _display_vui(nullptr, 0);
         return kNothing;
     },
     kNothing,
     {"vui != NULL"}},
    {"_display_hrd",
     [] {
         _display_hrd(nullptr, 1, 0);
         return kNothing;
     },
     kNothing,
     {"hrd != NULL"}},
    {"_display_sub_layer_hrd_parameters",
     [] {
         _display_sub_layer_hrd_parameters(nullptr, 1, 0);
         return kNothing;
     },
     kNothing,
     {"slhp != NULL"}},
};
INSTANTIATE_TEST_SUITE_P(Displays, MissingArguments, testing::ValuesIn(kDisplays));

// ---- rewriting
// ---------------------------------------------------------------------------------------------

const Function kRewriting[] = {
    {"_set_hrd_parameters",
     [] { return _set_hrd_parameters(nullptr, 1, 0, nullptr); },
     -1,
     {"sps_nalu_bb != NULL", "pHrd != NULL"}},
    {"_set_sub_layer_hrd_parameters",
     [] { return _set_sub_layer_hrd_parameters(nullptr, 0, 0, nullptr); },
     -1,
     {"sps_nalu_bb != NULL", "slhp != NULL"}},
    {"_modify_sps_parameters",
     [] { return _modify_sps_parameters(nullptr, 1, nullptr, nullptr, 256); },
     -1,
     {"sps_bb != NULL", "pSpsElements != NULL", "new_sps_bb != NULL",
      "NewSpsSodbLength >= (SpsSodbLength + MIN_VUI_PARAMETERS_SIZE_BYTES)"}},
    {"_set_sps_vui_parameters",
     [] { return _set_sps_vui_parameters(nullptr, 1, nullptr, nullptr, 256); },
     -1,
     {"sps_nalu_bb != NULL", "sps != NULL", "new_sps_nalu_bb != NULL",
      "NewSpsSodbLength >= (SpsSodbLength + MIN_VUI_PARAMETERS_SIZE_BYTES)"}},
    {"_modify_vps_parameters",
     [] { return _modify_vps_parameters(nullptr, 0, nullptr); },
     -1,
     {"vps_bb != NULL", "VPSSodbLength > 0", "pVpsElements != NULL"}},
    {"_modify_sei_pictiming_parameters",
     [] { return _modify_sei_pictiming_parameters(nullptr, 0, nullptr, 0, nullptr); },
     -1,
     {"sei_nalu_bb != NULL", "SEISodbLength > 0", "pPt != NULL", "pVUI != NULL"}},
    {"H265Lib_modify_sps_NAL",
     [] { return H265Lib_modify_sps_NAL(nullptr, 4, nullptr, nullptr, nullptr); },
     FALSE,
     {"pBuffer != NULL", "buffer_len > 4", "pSpsElements != NULL", "ppNewSpsBuffer != NULL",
      "pNewSPSLength != NULL"}},
    {"H265Lib_Set_sps_vui_parameters_NAL",
     [] { return H265Lib_Set_sps_vui_parameters_NAL(nullptr, 4, nullptr, nullptr, nullptr); },
     FALSE,
     {"pBuffer != NULL", "ppNewSpsBuffer != NULL", "pNewSPSLength != NULL"}},
    {"H265Lib_modify_vps_NAL",
     [] { return H265Lib_modify_vps_NAL(nullptr, 3); },
     FALSE,
     {"pBuffer != NULL", "buffer_len >= 4"},
     {"Failed to get NAL type offset from pBuffer:(nil).\n"},
     {{"H265Lib_modify_vps_NAL", "ORIGINAL VPS NAL (0 bytes):\n"}, kNoNal, kShortNal}},
    {"H265Lib_modify_pictiming_sei_NAL",
     [] { return H265Lib_modify_pictiming_sei_NAL(nullptr, nullptr, nullptr, 0, nullptr); },
     FALSE,
     {"pBuffer != NULL", "pBufferLen != NULL", "pVUI != NULL", "pPt != NULL"}},
    {"H265Lib_modify_pictiming_sei_NAL",
     [] {
         UINT length = 3;
         return H265Lib_modify_pictiming_sei_NAL(nullptr, &length, nullptr, 0, nullptr);
     },
     FALSE,
     {"pBuffer != NULL", "*pBufferLen >= 4", "pVUI != NULL", "pPt != NULL"},
     {"Failed to get NAL type offset from pBuffer:(nil).\n"},
     {kNoNal, kShortNal}},
};
INSTANTIATE_TEST_SUITE_P(Rewriting, MissingArguments, testing::ValuesIn(kRewriting));

// ---- SEI
// ---------------------------------------------------------------------------------------------------

const Function kSei[] = {
    {"_FindSEIUserDataRegisteredSUID",
     [] { return _FindSEIUserDataRegisteredSUID(nullptr, 0, nullptr); },
     FALSE,
     {"pBuffer != NULL", "penSUID != NULL"}},
    {"H265Lib_DetermineSEIType",
     [] { return H265Lib_DetermineSEIType(nullptr, 6, nullptr, nullptr, nullptr, nullptr, nullptr); },
     FALSE,
     {"pBuffer != NULL", "BufferLen >= 7", "pPayloadOffset != NULL", "pNALTypeOffset != NULL",
      "pSEIMessageHeader != NULL", "penSUID != NULL", "pbMoreSEIMessages != NULL"}},
    {"H265Lib_DetermineSEIType",
     [] {
         int payload_offset = -1;
         int nal_type_offset = INT_MIN;
         return H265Lib_DetermineSEIType(nullptr, 7, &payload_offset, &nal_type_offset, nullptr, nullptr,
                                         nullptr);
     },
     FALSE,
     {"pBuffer != NULL", "*pPayloadOffset >= 0", "*pNALTypeOffset >= 0", "pSEIMessageHeader != NULL",
      "penSUID != NULL", "pbMoreSEIMessages != NULL"}},
    {"_parse_sei_pic_timing",
     [] { return _parse_sei_pic_timing(nullptr, nullptr, nullptr, nullptr); },
     FALSE,
     {"pSeiPicTimingBb != NULL", "pMsgHeader != NULL", "pVui != NULL", "pPt != NULL"}},
    {"_parse_sei_timecode",
     [] { return _parse_sei_timecode(nullptr, nullptr, nullptr, nullptr); },
     FALSE,
     {"pSeiTimeCodeBb != NULL", "pMsgHeader != NULL", "pTc != NULL", "pLine != NULL"}},
    {"H265Lib_Parse_sei_pictiming_nal",
     [] { return H265Lib_Parse_sei_pictiming_nal(nullptr, 0, nullptr, nullptr, nullptr); },
     FALSE,
     {"pBuffer != NULL", "pMsgHeader != NULL", "pVUI != NULL", "pPt != NULL"},
     {"BufferLen:0 is too small. Malformed NAL.\n"}},
    {"H265Lib_Parse_sei_timecode_nal",
     [] { return H265Lib_Parse_sei_timecode_nal(nullptr, 4, nullptr, nullptr); },
     FALSE,
     {"pBuffer != NULL", "BufferLen > 4", "pTc != NULL"},
     {"Failed to parse_sei_timecode_nal! buffer:(nil).\n"},
     {kNoNal}},
    {"H265Lib_format_sei_cc_nal",
     [] { return H265Lib_format_sei_cc_nal(nullptr, 0, nullptr, 0, 600, nullptr); },
     0,
     {"buffer != NULL"},
     {},
     {{"H265Lib_format_sei_cc_nal", "Derived nEncoderID:0 from cc_count:600.\n"},
      {"H265Lib_format_sei_cc_nal",
       "Sanity, vanc_data:(nil), vanc_size:0, vanc_entries:0, cc_count:88, buffer_len:0, "
       "BytesNeeded:276.\n"}}},
    {"_format_sei_user_data_registered_nal",
     [] { return _format_sei_user_data_registered_nal(nullptr, 3, 0xB5, 0, nullptr, 0); },
     0,
     {"buffer != NULL", "buffer_len > 3", "user_data_payload != NULL", "payload_size > 0"},
     {"SEI output buffer length:3 is too small!\n"}},
    {"_format_sei_user_data_unregistered_nal",
     [] { return _format_sei_user_data_unregistered_nal(nullptr, 3, nullptr, 0, nullptr, 0); },
     0,
     {"buffer != NULL", "buffer_len > 3", "pUuid_iso_iec_11578 != NULL", "uuid_len > 0",
      "user_data_payload != NULL"},
     {"SEI output buffer length:3 is too small!\n"}},
    {"H265Lib_formatMISPMicroSecondTimeSEI",
     [] { return H265Lib_formatMISPMicroSecondTimeSEI(nullptr, 0, nullptr, 0); },
     -1,
     {},
     {"buffer:(nil) is NULL!\n"}},
    {"_set_pictiming_elements",
     [] { return _set_pictiming_elements(nullptr, 0, nullptr, nullptr); },
     -1,
     {"pictiming_bb != NULL", "PicTimingSodbLength > 0", "pVui != NULL", "pPt != NULL"}},
    {"H265Lib_format_sei_pictiming_nal",
     [] { return H265Lib_format_sei_pictiming_nal(nullptr, nullptr, nullptr, nullptr); },
     FALSE,
     {"pBuffer != NULL", "pBufferLen != NULL", "pVui != NULL", "pPt != NULL"}},
    {"H265Lib_format_sei_pictiming_nal",
     [] {
         UINT length = 31;
         return H265Lib_format_sei_pictiming_nal(nullptr, &length, nullptr, nullptr);
     },
     FALSE,
     {"pBuffer != NULL", "*pBufferLen >= MIN_PICTIMING_SEI_NAL_LENGTH", "pVui != NULL", "pPt != NULL"}},
    {"_set_sei_timecode_elements",
     [] { return _set_sei_timecode_elements(nullptr, nullptr); },
     -1,
     {"sei_nalu_bb != NULL", "pTc != NULL"}},
    {"_DeriveNumClockTs",
     [] { return _DeriveNumClockTs(nullptr, nullptr); },
     FALSE,
     {"pSps != NULL", "pNumClockTS != NULL"}},
    {"_SMPTEVitcToSEIPictiming",
     [] { return _SMPTEVitcToSEIPictiming(nullptr, nullptr); },
     -1,
     {},
     {"pVitcData:(nil) is NULL!\n"}},
    {"_SMPTEVitcToSEIPictiming",
     [] {
         const vitc_t vitc{};
         return _SMPTEVitcToSEIPictiming(&vitc, nullptr);
     },
     -1,
     {},
     {"SEIData:(nil) is NULL!\n"}},
    {"_AssembleTimecodeSEI",
     [] { return _AssembleTimecodeSEI(nullptr, 0, nullptr, nullptr); },
     -1,
     {"buffer != NULL", "pTimecode_data != NULL"},
     {kShortForTimeCode.second}},
    {"H265Lib_format_sei_time_code_nal",
     [] { return H265Lib_format_sei_time_code_nal(nullptr, 0, nullptr, nullptr); },
     -1,
     {"buffer != NULL", "len > 0", "pVitcData != NULL", "pTimecodeData != NULL"},
     {},
     {{"H265Lib_format_sei_time_code_nal",
       "Called. Buffer:0x(nil), len:0, pVitc_data:(nil), timecode_data:(nil)\n"},
      Assertion("_AssembleTimecodeSEI", "buffer != NULL"),
      Assertion("_AssembleTimecodeSEI", "pTimecode_data != NULL"),
      kShortForTimeCode}},
};
INSTANTIATE_TEST_SUITE_P(Sei, MissingArguments, testing::ValuesIn(kSei));

}  // namespace
}  // namespace test
