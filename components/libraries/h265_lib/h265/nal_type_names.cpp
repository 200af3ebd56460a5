// The names of nal_unit_type, ITU-T H.265 Table 7-1.

#include <iterator>

#include "h265.h"

namespace {

constexpr const char *kNames[] = {
    "TRAIL_N",        "TRAIL_R",     "TSA_N",          "TSA_R",          "STSA_N",          // 0
    "STSA_R",         "RADL_N",      "RADL_R",         "RASL_N",         "RASL_R",          // 5
    "RSV_VCL_N10",    "RSV_VCL_R11", "RSV_VCL_N12",    "RSV_VCL_R13",    "RSV_VCL_N14",     // 10
    "RSV_VCL_R15",    "BLA_W_LP",    "BLA_W_RADL",     "BLA_N_LP",       "IDR_W_RADL",      // 15
    "IDR_N_LP",       "CRA_NUT",     "RSV_IRAP_VCL22", "RSV_IRAP_VCL23", "RSV_VCL24",       // 20
    "RSV_VCL25",      "RSV_VCL26",   "RSV_VCL27",      "RSV_VCL28",      "RSV_VCL29",       // 25
    "RSV_VCL30",      "RSV_VCL31",   "VPS_NUT",        "SPS_NUT",        "PPS_NUT",         // 30
    "AUD_NUT",        "EOS_NUT",     "EOB_NUT",        "FD_NUT",         "PREFIX_SEI_NUT",  // 35
    "SUFFIX_SEI_NUT", "RSV_NVCL41",  "RSV_NVCL42",     "RSV_NVCL43",     "RSV_NVCL44",      // 40
    "RSV_NVCL45",     "RSV_NVCL46",  "RSV_NVCL47",     "UNSPEC48",                          // 45
};

}  // namespace

const char *GetH265NalTypeString(UINT enType) {
    return enType < std::size(kNames) ? kNames[enType] : "Invalid";
}
