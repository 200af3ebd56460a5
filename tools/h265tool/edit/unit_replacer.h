// Writes a stream again with some NAL units replaced.

#ifndef H265TOOL_EDIT_UNIT_REPLACER_H
#define H265TOOL_EDIT_UNIT_REPLACER_H

#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "annexb_scanner.h"
#include "rewriting/write_bytes.h"

namespace h265tool {

// By the number of the NAL unit, from 0 on; start codes included.
using Replacements = std::map<uint64_t, std::vector<unsigned char>>;

// The other NAL units pass through byte for byte, as the zero bytes between all of them do.
class UnitReplacer : public NalUnitSink {
 public:
    // The replacements have to outlive the object.
    UnitReplacer(const Replacements &replacements, WriteBytes write);

    void Begin(uint64_t offset, unsigned int start_code_length) override;
    void Bytes(std::span<const unsigned char> bytes) override;
    void End() override;

    // The stream has ended at this size.
    void Finish(uint64_t size);

 private:
    const Replacements &replacements_;
    WriteBytes write_;
    Replacements::const_iterator next_;
    uint64_t units_ = 0;  // before the current one
    uint64_t end_ = 0;    // of what came of the stream
    bool replaced_ = false;
};

}  // namespace h265tool

#endif
