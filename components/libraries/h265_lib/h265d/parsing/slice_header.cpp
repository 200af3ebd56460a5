#include "h265d/parsing/slice_header.h"

#include <bit>
#include <cstdlib>

#include "common/read.h"
#include "h265d/framing/parse_frame.h"

namespace {

// Table 7-1: the IRAP range with its two reserved types, and the two IDR types.
bool IsIrap(int nal_unit_type) {
    return nal_unit_type >= 16 && nal_unit_type <= 23;
}

bool IsIdr(int nal_unit_type) {
    return nal_unit_type == 19 || nal_unit_type == 20;
}

// The most that is read: in the order of the elements, a ue(v) taking up to 65 bits.
constexpr int64_t MAX_BYTES_READ = (1 + 1 + 65 + 1 + 32 + 32 + 65 + 1 + 2 + 32 + 7) / 8;

constexpr UINT64 TOO_LARGE_CTB = ~UINT64{0} << 31;

// A picture dimension in coding tree blocks. Block sizes beyond 32 bits, which no valid SPS has, wrap.
UINT64 SizeInCtbs(UINT64 luma_samples, const sps_h265_t &sps) {
    const UINT64 MinCbLog2SizeY = sps.log2_min_luma_coding_block_size_minus3 + 3;
    const UINT64 CtbLog2SizeY = MinCbLog2SizeY + sps.log2_diff_max_min_luma_coding_block_size;
    const unsigned int shift = CtbLog2SizeY % 32;
    if (shift == 31)  // the size is a signed 32-bit number, of which 1 << 31 makes 2^64 - 2^31
        return luma_samples / TOO_LARGE_CTB + (luma_samples % TOO_LARGE_CTB != 0);
    const UINT64 rest = luma_samples & ((UINT64{1} << shift) - 1);
    return (luma_samples >> shift) + (rest != 0);
}

// The width of slice_segment_address: one bit more than H.265 codes when the number of coding tree blocks is
// a power of two. Intended so.
unsigned int SliceSegmentAddressLength(const sps_h265_t &sps) {
    const UINT64 PicSizeInCtbsY =
        SizeInCtbs(sps.pic_width_in_luma_samples, sps) * SizeInCtbs(sps.pic_height_in_luma_samples, sps);
    return static_cast<unsigned int>(std::bit_width(PicSizeInCtbsY));
}

}  // namespace

int _parse_slice_header(bitbuffer_t *pNal_bb, const sps_h265_t *sps, const pps_h265_t *pps, int nal_unit_type,
                        ssh_h265_t *pSh) {
    if (pNal_bb == nullptr || pSh == nullptr) {
        TRACE(kError, "pNal_bb:%p or sliceheader:%p are NULL this should not happen!\n",
              static_cast<void *>(pNal_bb), static_cast<void *>(pSh));
        return -1;
    }
    if (sps == nullptr) {
        TRACE(kError, "sps:%p is NULL this should not happen!\n", static_cast<const void *>(sps));
        return -1;
    }
    if (pps == nullptr) {
        TRACE(kError, "pps:%p is NULL this should not happen!\n", static_cast<const void *>(pps));
        return -1;
    }

    BitReader bb(pNal_bb);
    READ_FLAG_AS(bb, pSh->first_slice_segment_in_pic_flag,
                 "failed to get first_slice_segment_in_pic_flag.\n");
    if (IsIrap(nal_unit_type))
        READ_FLAG_AS(bb, pSh->no_output_of_prior_pics_flag, "failed to get no_output_of_prior_pics_flag.\n");
    READ_UE_AS(bb, pSh->slice_pic_parameter_set_id, "failed to get slice_pic_parameter_set_id.\n");
    pSh->dependent_slice_segment_flag = 0;
    if (!pSh->first_slice_segment_in_pic_flag) {
        if (pps->dependent_slice_segments_enabled_flag)
            READ_FLAG_AS(bb, pSh->dependent_slice_segment_flag,
                         "failed to get dependent_slice_segment_flag.\n");
        const unsigned int bitlength = SliceSegmentAddressLength(*sps);
        TRACE(kFunction, "ssh: slice_segment_address length is %d bits\n", bitlength);
        READ_V_AS(bb, bitlength, pSh->slice_segment_address, "failed to get slice_segment_address.\n");
    }
    pSh->pic_output_flag = 1;
    if (pSh->dependent_slice_segment_flag)
        return 0;

    if (pps->num_extra_slice_header_bits) {
        UINT64 slice_reserved_flags = 0;
        READ_V_AS(bb, pps->num_extra_slice_header_bits, slice_reserved_flags,
                  "failed to get slice_reserved flag.\n");
    }
    READ_UE_AS(bb, pSh->slice_type, "failed to get slice_type.\n");
    if (pps->output_flag_present_flag)
        READ_FLAG_AS(bb, pSh->pic_output_flag, "failed to get pic_output_flag.\n");
    if (sps->separate_colour_plane_flag == 1)
        READ_U_AS(bb, 2, pSh->colour_plane_id, "failed to get colour_plane_id.\n");
    pSh->slice_pic_order_cnt_lsb = 0;
    if (IsIdr(nal_unit_type))
        return 0;
    READ_V_AS(bb, sps->log2_max_pic_order_cnt_lsb_minus4 + 4, pSh->slice_pic_order_cnt_lsb,
              "failed to get slice_pic_order_cnt_lsb.\n");
    return 0;
}

BOOL H265Lib_Parse_slice_header_nal(const unsigned char *buffer, int buffer_len, const sps_h265_t *sps,
                                    const pps_h265_t *pps, ssh_h265_t *pSh) {
    static constexpr ParseFrameTexts kTexts = {
        TRACE_SITE, kBufferLenTooSmall, "Failed to parse slice header nal! buffer:%p.\n", kNoSodbFromRbsp};

    if (buffer == nullptr || pSh == nullptr) {
        TRACE(kError, "buffer:%p or slice header:%p are NULL. This should not happen!\n",
              static_cast<const void *>(buffer), static_cast<void *>(pSh));
        return FALSE;
    }
    unsigned char *nal_sodb_buffer = nullptr;
    bitbuffer_t bb;
    const unsigned char *const header = OpenSodbOnHeap(
        {buffer, buffer_len}, kTexts, "Failed to allocate memory for nal_sodb_buffer. Size requested:%d.\n",
        &nal_sodb_buffer, &bb, PrefixOfNal(MAX_BYTES_READ));
    if (header == nullptr)
        return FALSE;
    const int nal_unit_type = header[0] >> 1 & 0x3F;
    const int result = _parse_slice_header(&bb, sps, pps, nal_unit_type, pSh);
    std::free(nal_sodb_buffer);
    if (result == -1) {
        TRACE(kError, "Failed to parse slice header NAL!\n");
        return FALSE;
    }
    return TRUE;
}
