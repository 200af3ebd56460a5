"""Slice segment headers."""

from ctypes import byref
from typing import Self

from ._functions import library
from .records import pps_h265_t, sps_h265_t, ssh_h265_t
from .trace import call

_MAX_CTB_LOG2_SIZE = 6  # clause 7.4.3.2.1


def _sps_for_slices(sps: sps_h265_t) -> sps_h265_t:
    """The SPS, or a copy with a picture of one coding tree block less.

    The library reads slice_segment_address with one bit more than H.265 codes when PicSizeInCtbsY is a power
    of two. The rest of a slice segment header does not depend on the size of the picture.
    """
    CtbLog2SizeY = (sps.log2_min_luma_coding_block_size_minus3 + 3
                    + sps.log2_diff_max_min_luma_coding_block_size)
    if CtbLog2SizeY > _MAX_CTB_LOG2_SIZE:
        return sps  # no H.265 picture: the library's reading is as good as any
    CtbSizeY = 1 << CtbLog2SizeY

    def in_ctbs(samples: int) -> int:
        return (samples + CtbSizeY - 1) // CtbSizeY

    PicSizeInCtbsY = in_ctbs(sps.pic_width_in_luma_samples) * in_ctbs(sps.pic_height_in_luma_samples)
    if PicSizeInCtbsY < 2 or PicSizeInCtbsY.bit_count() != 1:
        return sps
    copy = sps_h265_t.from_buffer_copy(sps)
    copy.pic_width_in_luma_samples = (PicSizeInCtbsY - 1) * CtbSizeY
    copy.pic_height_in_luma_samples = CtbSizeY
    return copy


class SliceHeader(ssh_h265_t):
    """The first fields of a slice segment header, those of ssh_h265_t."""

    @classmethod
    def parse(cls, nal: bytes, sps: sps_h265_t, pps: pps_h265_t) -> Self:
        """Parses the header of a coded slice segment NAL unit (H265Lib_Parse_slice_header_nal).

        sps and pps are the active parameter sets. They are not checked against slice_pic_parameter_set_id,
        which does not depend on them: it may be learnt with any pair. slice_segment_address is read as H.265
        codes it, whatever the size of the picture. Raises H265Error.
        """
        header = cls()
        call(library.H265Lib_Parse_slice_header_nal, nal, len(nal), byref(_sps_for_slices(sps)), byref(pps),
             byref(header))
        return header
