// Reads the NAL units of one stream, in order: what is in each, on the grounds of those before it.

#ifndef H265TOOL_READING_UNIT_READER_H
#define H265TOOL_READING_UNIT_READER_H

#include <memory>
#include <optional>
#include <variant>
#include <vector>

#include "diagnostics.h"
#include "h265.h"
#include "nal_unit.h"
#include "parameter_sets.h"
#include "reading/problem.h"
#include "reading/sei.h"
#include "reading/slice_header.h"

namespace h265tool {

// What a NAL unit holds; nothing for the types that are shown by their names alone. Records are the reader's,
// valid until it reads the next NAL unit.
using UnitContent = std::variant<std::monostate, const vps_h265_t *, const sps_h265_t *, const pps_h265_t *,
                                 Slice, aud_h265_t, Sei, Unparsable, NotParsed>;

class UnitReader {
 public:
    UnitReader();

    // Picture timing messages stay unread: which SPS they depend on is known at the slice behind them.
    UnitContent Read(const NalUnit &unit);

    // Reads them with the SPS of that slice, or, without one, with the SPS that is the most likely to be
    // theirs: that of the slice before them, else the only one of the stream.
    void ReadPicTimings(const Slice *slice, Sei *sei);

    // For other calls of the library while the reader is alive: there is one at a time.
    Diagnostics *diagnostics() { return &diagnostics_; }

    // How many bytes Read needs behind the start code of a NAL unit of this type.
    static size_t HeadSize(unsigned int nal_unit_type);

 private:
    UnitContent ReadWithHeader(const NalUnit &unit, const NalUnitHeader &header);
    Slice ReadSlice(const NalUnit &unit);
    const vps_h265_t *ReadVps(const NalUnit &unit);
    const sps_h265_t *ReadSps(const NalUnit &unit);
    const pps_h265_t *ReadPps(const NalUnit &unit);

    // A parameter set that the stream repeats is read once. Empty when there is none, or a bad one.
    using UnitBytes = std::vector<unsigned char>;

    Diagnostics diagnostics_;
    ParameterSets sets_;
    std::optional<uint64_t> last_sps_id_;  // that a slice referred to
    std::unique_ptr<vps_h265_t> vps_;
    std::unique_ptr<sps_h265_t> sps_;
    std::unique_ptr<pps_h265_t> pps_;
    UnitBytes vps_bytes_;  // what the records were read from
    UnitBytes sps_bytes_;
    UnitBytes pps_bytes_;
};

}  // namespace h265tool

#endif
