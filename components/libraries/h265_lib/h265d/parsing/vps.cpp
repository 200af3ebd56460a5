#include "h265d/parsing/vps.h"

#include <algorithm>

#include "common/read.h"
#include "h265d/framing/parse_frame.h"
#include "h265d/parsing/hrd.h"
#include "h265d/parsing/profile_tier_level.h"
#include "h265d/parsing/sodb_capacity.h"

namespace {

// What clause 7.4.3.1 permits.
constexpr uint32_t MAX_VPS_NUM_LAYER_SETS_MINUS1 = 1023;
constexpr uint32_t MAX_VPS_NUM_HRD_PARAMETERS = 1024;

// Layer ids whose flags the record keeps; the name is that of an assertion's text.
constexpr int MAX_VPS_NUM_LAYER_SETS_MINUS1_VALUE = H265_VPS_LAYER_IDS;

// Entry i of a record's array; `dropped` takes the place of an entry that the record cannot hold.
template <typename Value, int size>
Value &KeptOrDropped(Value (&array)[size], int i, Value &dropped) {
    return i < size ? array[i] : dropped;
}

// Says, in _parse_vps's name, what a legal VPS carries beyond the bounds of the record.
void ReportDropped(const TraceSite &site, const vps_h265_t &vps) {
    if (vps.vps_max_sub_layers_minus1 >= H265_VPS_SUB_LAYERS)
        TraceAt(site, kWarning, "Ordering information of %d sub-layers, the first %d are kept.\n",
                vps.vps_max_sub_layers_minus1 + 1, H265_VPS_SUB_LAYERS);
    if (vps.vps_num_layers_sets_minus1 >= H265_VPS_LAYER_SETS ||
        (vps.vps_num_layers_sets_minus1 > 0 && vps.vps_max_layer_id >= H265_VPS_LAYER_IDS))
        TraceAt(site, kWarning, "%d layer sets of %d layers, the first %d of %d are kept.\n",
                static_cast<int>(vps.vps_num_layers_sets_minus1) + 1, vps.vps_max_layer_id + 1,
                H265_VPS_LAYER_SETS, H265_VPS_LAYER_IDS);
    if (vps.vps_timing_info_present_flag && vps.vps_num_hrd_parameters > H265_VPS_HRDS)
        TraceAt(site, kWarning, "%d HRDs, the first %d are kept.\n",
                static_cast<int>(vps.vps_num_hrd_parameters), H265_VPS_HRDS);
}

}  // namespace

int _parse_vps(bitbuffer_t *vps_nalu_bb, vps_h265_t *pVps) {
    ASSERT_ARGUMENT(vps_nalu_bb != NULL);
    ASSERT_ARGUMENT(pVps != NULL);
    if (vps_nalu_bb == nullptr || pVps == nullptr)
        return -1;
    TRACE(kFunction, "Called.\n");

    BitReader bb(vps_nalu_bb);
    READ_U(bb, 4, pVps, vps_video_parameter_set_id);
    READ_FLAG(bb, pVps, vps_base_layer_internal_flag);
    READ_FLAG(bb, pVps, vps_base_layer_available_flag);
    READ_U(bb, 6, pVps, vps_max_layers_minus1);
    READ_U(bb, 3, pVps, vps_max_sub_layers_minus1);
    READ_FLAG(bb, pVps, vps_temporal_id_nesting_flag);
    READ_U(bb, 16, pVps, vps_reserved_0xffff_16bits);
    READ_STRUCTURE(_parse_profile_tier_level(bb.Lend(), pVps->vps_max_sub_layers_minus1, &pVps->ptl),
                   "cannot parse profile_tier_level.\n");
    TRACE(kFunction, "After profile tier level, CurrentBitOffset:%d.\n", bb.offset());
    READ_FLAG(bb, pVps, vps_sub_layer_ordering_info_present_flag);
    UINT64 dropped_value = 0;
    for (int i = pVps->vps_sub_layer_ordering_info_present_flag ? 0 : pVps->vps_max_sub_layers_minus1;
         i <= pVps->vps_max_sub_layers_minus1; i++) {
        READ_UE_AS(bb, KeptOrDropped(pVps->vps_max_dec_pic_buffering_minus1, i, dropped_value),
                   "cannot parse vps_max_dec_pic_buffering_minus1[%d].\n", i);
        READ_UE_AS(bb, KeptOrDropped(pVps->vps_max_num_reorder_pics, i, dropped_value),
                   "cannot parse vps_max_num_reorder_pics[%d].\n", i);
        READ_UE_AS(bb, KeptOrDropped(pVps->vps_max_latency_increase_plus1, i, dropped_value),
                   "cannot parse vps_max_latency_increase_plus1[%d].\n", i);
    }
    READ_U(bb, 6, pVps, vps_max_layer_id);
    READ_UE_MAX(bb, MAX_VPS_NUM_LAYER_SETS_MINUS1, pVps, vps_num_layers_sets_minus1);
    int dropped_flag = 0;
    const int vps_num_layers_sets_minus1 = static_cast<int>(pVps->vps_num_layers_sets_minus1);
    for (int i = 1; i <= vps_num_layers_sets_minus1; i++) {
        for (int j = 0; j <= pVps->vps_max_layer_id; j++) {
            ASSERT_ARGUMENT(j < MAX_VPS_NUM_LAYER_SETS_MINUS1_VALUE);
            const bool kept = i < H265_VPS_LAYER_SETS && j < H265_VPS_LAYER_IDS;
            READ_FLAG_AS(bb, kept ? pVps->layer_id_included_flag[i][j] : dropped_flag,
                         "cannot parse layer_id_included_flag[%d][%d].\n", i, j);
        }
    }
    READ_FLAG(bb, pVps, vps_timing_info_present_flag);
    if (pVps->vps_timing_info_present_flag) {
        READ_U(bb, 32, pVps, vps_num_units_in_tick);
        READ_U(bb, 32, pVps, vps_time_scale);
        READ_FLAG(bb, pVps, vps_poc_proportional_to_timing_flag);
        if (pVps->vps_poc_proportional_to_timing_flag)
            READ_UE(bb, pVps, vps_num_ticks_poc_diff_one_minus1);
        READ_UE_MAX(bb, MAX_VPS_NUM_HRD_PARAMETERS, pVps, vps_num_hrd_parameters);
        int CpbDpbDelaysPresentFlag = 0;
        hrd_h265_t dropped_hrd;
        const int vps_num_hrd_parameters = static_cast<int>(pVps->vps_num_hrd_parameters);
        for (int i = 0; i < vps_num_hrd_parameters; i++) {
            // a dropped HRD without a common part of its own leans on the one before it, as H.265 infers it
            if (i == H265_VPS_HRDS)
                dropped_hrd = pVps->vps_hrd_parameters[H265_VPS_HRDS - 1];
            if (i >= H265_VPS_HRDS)
                std::fill_n(dropped_hrd.low_delay_hrd_flag, H265_HRD_SUB_LAYERS, 0);
            int &cprms_present_flag = KeptOrDropped(pVps->cprms_present_flag, i, dropped_flag);
            READ_UE_AS(bb, KeptOrDropped(pVps->hrd_layer_set_idx, i, dropped_value),
                       "cannot parse hrd_layer_set_idx[%d].\n", i);
            if (i > 0)
                READ_FLAG_AS(bb, cprms_present_flag, "cannot parse cprms_present_flag[%d].\n", i);
            READ_STRUCTURE(_parse_hrd(bb.Lend(), cprms_present_flag, pVps->vps_max_sub_layers_minus1,
                                      &CpbDpbDelaysPresentFlag,
                                      &KeptOrDropped(pVps->vps_hrd_parameters, i, dropped_hrd)),
                           "failed to parse hrd parameters[%d].\n", i);
        }
    }
    READ_FLAG(bb, pVps, vps_extenstion_flag);
    if (pVps->vps_extenstion_flag) {
        const int count = ReadToEnd(bb, pVps->vps_extenstion_data_flag);
        TRACE(kInformation, "vps_extension_data_flag has %d bits.\n", count);
    }
    if (TraceLetsThrough(kWarning))
        ReportDropped(TRACE_SITE, *pVps);
    TRACE(kFunction, "Done.\n");
    return 0;
}

BOOL H265Lib_Parse_vps_nal(const unsigned char *pBuffer, size_t BufferLen, vps_h265_t *pVps) {
    static constexpr ParseFrameTexts kTexts = {
        TRACE_SITE, kCapitalBufferLenTooSmall,
        "Failed to parse sps nal! buffer:%p.\n",  // names the SPS on purpose
        kNoSodbFromRbsp};

    ASSERT_ARGUMENT(pBuffer != NULL);
    ASSERT_ARGUMENT(BufferLen > 0);
    ASSERT_ARGUMENT(pVps != NULL);

    unsigned char sodb[VPS_SODB_CAPACITY];
    bitbuffer_t bb;
    if (!OpenSodb({pBuffer, static_cast<int64_t>(BufferLen)}, kTexts, sodb, sizeof sodb, &bb))
        return FALSE;
    if (_parse_vps(&bb, pVps) == -1) {
        TRACE(kError, "Failed to parse VPS NAL!\n");
        return FALSE;
    }
    return TRUE;
}
