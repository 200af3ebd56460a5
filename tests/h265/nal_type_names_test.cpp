#include <gtest/gtest.h>

#include <iterator>

#include "h265.h"

namespace test {
namespace {

TEST(NalTypeNames, StandInTheOrderOfTheTypes) {
    const char *const names[] = {
        "TRAIL_N",     "TRAIL_R",     "TSA_N",       "TSA_R",          "STSA_N",         "STSA_R",
        "RADL_N",      "RADL_R",      "RASL_N",      "RASL_R",         "RSV_VCL_N10",    "RSV_VCL_R11",
        "RSV_VCL_N12", "RSV_VCL_R13", "RSV_VCL_N14", "RSV_VCL_R15",    "BLA_W_LP",       "BLA_W_RADL",
        "BLA_N_LP",    "IDR_W_RADL",  "IDR_N_LP",    "CRA_NUT",        "RSV_IRAP_VCL22", "RSV_IRAP_VCL23",
        "RSV_VCL24",   "RSV_VCL25",   "RSV_VCL26",   "RSV_VCL27",      "RSV_VCL28",      "RSV_VCL29",
        "RSV_VCL30",   "RSV_VCL31",   "VPS_NUT",     "SPS_NUT",        "PPS_NUT",        "AUD_NUT",
        "EOS_NUT",     "EOB_NUT",     "FD_NUT",      "PREFIX_SEI_NUT", "SUFFIX_SEI_NUT", "RSV_NVCL41",
        "RSV_NVCL42",  "RSV_NVCL43",  "RSV_NVCL44",  "RSV_NVCL45",     "RSV_NVCL46",     "RSV_NVCL47",
        "UNSPEC48",
    };
    ASSERT_EQ(std::size(names), 49u);
    for (UINT type = 0; type < std::size(names); type++)
        EXPECT_STREQ(GetH265NalTypeString(type), names[type]) << type;
}

TEST(NalTypeNames, FixedPoints) {
    EXPECT_STREQ(GetH265NalTypeString(24), "RSV_VCL24");
    EXPECT_STREQ(GetH265NalTypeString(32), "VPS_NUT");
    EXPECT_STREQ(GetH265NalTypeString(40), "SUFFIX_SEI_NUT");
    EXPECT_STREQ(GetH265NalTypeString(48), "UNSPEC48");
}

TEST(NalTypeNames, AnythingAbove48IsInvalid) {
    for (const UINT type : {49u, 50u, 63u, 64u, 127u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_STREQ(GetH265NalTypeString(type), "Invalid") << type;
}

}  // namespace
}  // namespace test
