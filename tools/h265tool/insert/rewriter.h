// Writes a stream again, with what is inserted and without what is replaced.

#ifndef H265TOOL_INSERT_REWRITER_H
#define H265TOOL_INSERT_REWRITER_H

#include <span>
#include <vector>

#include "annexb_scanner.h"
#include "insert/access_units.h"
#include "insert/messages.h"
#include "insert/request.h"
#include "nal_unit.h"
#include "rewriting/write_bytes.h"

namespace h265tool {

// NAL units that nothing is taken out of pass through byte for byte, as the zero bytes between them do.
class Rewriter : public NalUnitSink {
 public:
    // The arguments have to outlive the object.
    Rewriter(const Request &request, const StreamLayout &layout, const MessageBuilder &messages,
             WriteBytes write);

    void Begin(uint64_t offset, unsigned int start_code_length) override;
    void Bytes(std::span<const unsigned char> bytes) override;
    void End() override;

    // The stream has ended at this size: with End called, and trailing zero bytes not.
    void Finish(uint64_t size);

 private:
    bool MayChange() const;
    void InsertInFront();
    void PassHeld();
    void PassOrDrop();
    void Drop();
    void Insert(const NalUnitBytes &nal_unit);

    const Request &request_;
    const StreamLayout &layout_;
    const MessageBuilder &messages_;
    WriteBytes write_;

    uint64_t units_ = 0;  // before the current one
    size_t next_access_unit_ = 0;
    bool at_start_ = false;       // of an access unit: nothing of it was written
    bool start_dropped_ = false;  // what stood there was taken out
    bool held_ = false;           // the current NAL unit is kept in unit_ and not yet written
    NalUnit unit_;
};

}  // namespace h265tool

#endif
