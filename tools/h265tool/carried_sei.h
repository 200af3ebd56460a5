// The pictures of a stream with the captions, time codes and active format descriptions that they carry.

#ifndef H265TOOL_CARRIED_SEI_H
#define H265TOOL_CARRIED_SEI_H

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "h265.h"
#include "nal_unit.h"
#include "output_order.h"
#include "picture_order.h"
#include "reading/unit_reader.h"

namespace h265tool {

struct CarriedSei {
    std::vector<SEI_cc_t> captions;
    std::vector<sei_h265_time_code_t> time_codes;
    std::vector<SEI_afd_t> afd;

    void Append(const Sei &sei);
};

struct PictureWithSei {
    uint64_t number = 0;                    // in decoding order, from 0 on
    std::optional<int64_t> PicOrderCntVal;  // none when the slice header could not be read
    std::optional<uint64_t> presentation;   // in output order, from 0 on; none when it is not output either
    CarriedSei carried;
};

// Takes the NAL units of a stream in order and hands on its pictures, those of the base layer, in decoding
// order, each when its place in the output order is known. SEI belongs to the picture of its access unit
// (clause 7.4.2.4.4): prefix SEI to the slice behind it, suffix SEI to the slice in front of it.
class CarriedSeiReader {
 public:
    using TakePicture = std::function<void(const PictureWithSei &)>;
    using TakeError = std::function<void(const NalUnit &, const std::string &reason)>;

    CarriedSeiReader(TakePicture take_picture, TakeError take_error);

    void Take(const NalUnit &unit);
    void Finish();  // the stream ends here

 private:
    struct Waiting {
        PictureWithSei picture;
        bool is_placed = false;
    };

    void TakeSei(const NalUnit &unit, const Sei &sei);
    void TakeSlice(const NalUnit &unit, const Slice *slice);
    void TakePictureStart(const NalUnit &unit, const Slice &slice);
    void HandOn();

    TakePicture take_picture_;
    TakeError take_error_;
    UnitReader reader_;
    PictureOrderCounter order_counter_;
    OutputOrder output_order_;
    CarriedSei in_front_;           // of the next slice
    std::deque<Waiting> pictures_;  // those not handed on; the last may still get suffix SEI
    uint64_t count_ = 0;
};

}  // namespace h265tool

#endif
