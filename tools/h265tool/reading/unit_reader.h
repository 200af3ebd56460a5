// Reads the NAL units of one stream, in order: what is in each, on the grounds of those before it.

#ifndef H265TOOL_READING_UNIT_READER_H
#define H265TOOL_READING_UNIT_READER_H

#include <memory>
#include <string>
#include <variant>

#include "diagnostics.h"
#include "h265.h"
#include "nal_unit.h"
#include "parameter_sets.h"
#include "reading/slice_header.h"

namespace h265tool {

// Something in the stream is wrong.
struct Unparsable {
    std::string reason;
};

// Nothing is wrong, but the tool does not read it.
struct NotParsed {
    std::string reason;
};

// What a NAL unit holds; nothing for the types that are shown by their names alone. Records are the reader's,
// valid until it reads the next NAL unit.
using UnitContent = std::variant<std::monostate, const vps_h265_t *, const sps_h265_t *, const pps_h265_t *,
                                 Slice, aud_h265_t, Unparsable, NotParsed>;

class UnitReader {
 public:
    UnitReader();
    UnitContent Read(const NalUnit &unit);

    // How many bytes Read needs behind the start code of a NAL unit of this type.
    static size_t HeadSize(unsigned int nal_unit_type);

 private:
    UnitContent ReadWithHeader(const NalUnit &unit, const NalUnitHeader &header);
    const vps_h265_t *ReadVps(const NalUnit &unit);
    const sps_h265_t *ReadSps(const NalUnit &unit);
    const pps_h265_t *ReadPps(const NalUnit &unit);

    Diagnostics diagnostics_;
    ParameterSets sets_;
    std::unique_ptr<vps_h265_t> vps_;
    std::unique_ptr<sps_h265_t> sps_;
    std::unique_ptr<pps_h265_t> pps_;
};

}  // namespace h265tool

#endif
