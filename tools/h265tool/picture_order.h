// The order in which pictures are output, from their slice headers.

#ifndef H265TOOL_PICTURE_ORDER_H
#define H265TOOL_PICTURE_ORDER_H

#include <cstdint>

namespace h265tool {

// What picture order depends on: elements of the first slice segment of a picture.
struct PictureStart {
    unsigned int nal_unit_type = 0;
    unsigned int temporal_id = 0;
    uint64_t slice_pic_order_cnt_lsb = 0;  // of no account for IDR pictures, which do not carry it
    uint64_t log2_max_lsb = 4;             // log2_max_pic_order_cnt_lsb_minus4 + 4; at most 16 counts
};

struct PictureOrder {
    int64_t PicOrderCntVal = 0;

    // A coded video sequence starts here. Its pictures are output behind those of the one before.
    bool starts_cvs = false;

    // A RASL picture whose IRAP picture starts the coded video sequence: what it refers to is not there, and
    // it is not output (clause C.5.2.2).
    bool is_skipped = false;
};

// Picture order count, clause 8.3.1, of the pictures of the base layer in decoding order. A stream that does
// not begin with an IRAP picture is taken as if it did.
class PictureOrderCounter {
 public:
    PictureOrder Next(const PictureStart &picture);

    // An end of sequence or end of bitstream NAL unit: an IRAP picture that follows starts a coded video
    // sequence.
    void EndOfSequence() { first_ = true; }

 private:
    bool first_ = true;     // the next picture is the first in the stream or behind the end of a sequence
    bool skips_ = false;    // NoRaslOutputFlag of the last IRAP picture
    int64_t prev_lsb_ = 0;  // of prevTid0Pic
    int64_t prev_msb_ = 0;
};

}  // namespace h265tool

#endif
