// The access units of a stream: where each begins, and what inserting something into it depends on.

#ifndef H265TOOL_INSERT_ACCESS_UNITS_H
#define H265TOOL_INSERT_ACCESS_UNITS_H

#include <bitset>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "h265.h"
#include "insert/sei_messages.h"
#include "nal_unit.h"
#include "picture_order.h"
#include "reading/unit_reader.h"

namespace h265tool {

// What a picture timing message says besides pic_struct.
struct PicTimingRest {
    unsigned char source_scan_type;
    int duplicate_flag;
    uint64_t au_cpb_removal_delay_minus1;
    uint64_t pic_dpb_output_delay;
};

struct AccessUnit {
    uint64_t offset = 0;       // of its first NAL unit, in the stream
    uint64_t first_unit = 0;   // NAL units are counted from 0 on
    uint64_t first_slice = 0;  // the NAL unit with the first slice segment of the base layer
    unsigned int temporal_id = 0;
    unsigned int pic_type = 0;  // that of an access unit delimiter, Table 7-2
    bool has_delimiter = false;
    std::bitset<kSeiKinds> has;               // by SeiKind
    std::optional<PicTimingRest> pic_timing;  // of the message that is there
    std::shared_ptr<const sps_h265_t> sps;    // the active one

    int64_t PicOrderCntVal = 0;
    bool starts_cvs = false;
    bool is_output = true;
    uint64_t presentation = 0;  // pictures that are output before it

    bool Has(SeiKind kind) const { return has.test(static_cast<size_t>(kind)); }
};

struct StreamLayout {
    std::vector<AccessUnit> access_units;  // in decoding order

    // Where an end of sequence NAL unit belongs: in front of this NAL unit, an end of bitstream, or behind
    // all (as many as there are). None when the stream ends with one.
    std::optional<uint64_t> end_of_sequence;
};

// Takes the NAL units of a stream in order; access units begin as clause 7.4.2.4.4 says.
class AccessUnitSplitter {
 public:
    // Throws UnitError for a slice that cannot be read, or has no picture that it could belong to.
    void Take(const NalUnit &unit);

    // Throws UnitError when there was no picture.
    StreamLayout Finish();

    // How many bytes Take needs behind the start code of a NAL unit of this type.
    static size_t HeadSize(unsigned int nal_unit_type) { return UnitReader::HeadSize(nal_unit_type); }

 private:
    bool StartsAccessUnit(const NalUnitHeader &header, const Slice *slice) const;
    void Begin(const NalUnit &unit);
    void TakeSlice(const NalUnitHeader &header, const Slice &slice);
    void BeginPicture(const NalUnitHeader &header, const Slice &slice);
    void TakeSei(const NalUnit &unit);
    void ParsePicTiming();
    std::shared_ptr<const sps_h265_t> Shared(const sps_h265_t &sps);

    UnitReader reader_;
    PictureOrderCounter order_;
    StreamLayout layout_;
    uint64_t units_ = 0;
    bool in_access_unit_ = false;
    bool in_picture_ = false;  // a slice of the base layer has come
    bool ends_sequence_ = false;
    std::optional<uint64_t> end_of_bitstream_;

    // Found in front of the slices that tell how to read it.
    std::optional<NalUnit> pic_timing_unit_;
    SEI_message_t pic_timing_header_{};

    std::shared_ptr<const sps_h265_t> last_sps_;
    bool sps_came_ = false;  // since last_sps_ was copied
};

// Numbers the pictures that are output: by picture order count within a coded video sequence.
void NumberPresentation(std::vector<AccessUnit> *access_units);

}  // namespace h265tool

#endif
