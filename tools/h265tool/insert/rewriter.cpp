#include "insert/rewriter.h"

#include <algorithm>
#include <utility>

namespace h265tool {

Rewriter::Rewriter(const Request &request, const StreamLayout &layout, const MessageBuilder &messages,
                   WriteBytes write)
    : request_(request), layout_(layout), messages_(messages), write_(std::move(write)) {}

void Rewriter::Begin(uint64_t offset, unsigned int start_code_length) {
    WriteZeros(write_, offset - (unit_.offset + unit_.size));
    unit_.offset = offset;
    unit_.size = start_code_length;
    unit_.start_code_length = start_code_length;
    unit_.head.assign(start_code_length, 0);
    unit_.head.back() = 1;
    held_ = true;
    InsertInFront();
}

void Rewriter::Bytes(std::span<const unsigned char> bytes) {
    unit_.size += bytes.size();
    if (!held_) {
        write_(bytes);
        return;
    }
    unit_.head.insert(unit_.head.end(), bytes.begin(), bytes.end());
    if (unit_.Header().has_value() && !MayChange())
        PassHeld();
}

// Longer NAL units were not looked into when the layout was made.
bool Rewriter::MayChange() const {
    const unsigned int type = unit_.Header()->nal_unit_type;
    const bool is_delimiter = type == kAud && request_.delimiters && unit_.Header()->nuh_layer_id == 0;
    return request_.replace && (is_delimiter || IsBaseLayerSei(unit_)) &&
           unit_.HeadBehindStartCode().size() <= AccessUnitSplitter::HeadSize(type);
}

void Rewriter::End() {
    if (held_ && unit_.Header().has_value())
        PassOrDrop();
    else if (held_)
        PassHeld();
    units_++;
}

void Rewriter::PassOrDrop() {
    held_ = false;
    if (unit_.Header()->nal_unit_type == kAud) {
        Drop();
        return;
    }
    std::optional<std::vector<SeiPart>> messages = SplitSei(unit_);
    const size_t removed =
        !messages.has_value() ? 0 : std::erase_if(*messages, [this](const SeiPart &message) {
            return request_.Wants(message.kind);
        });
    if (removed == 0) {
        PassHeld();
    } else if (!messages->empty()) {
        unit_.head = JoinSei(unit_, *messages);
        PassHeld();
    } else {
        Drop();
    }
}

void Rewriter::Drop() {
    held_ = false;
    start_dropped_ = at_start_;
}

// A start code of its own is kept as it is, but what comes to stand first in its access unit has one of four
// bytes (clause B.2.2).
void Rewriter::PassHeld() {
    held_ = false;
    const bool stands_first = std::exchange(at_start_, false) && start_dropped_;
    WriteZeros(write_, stands_first && unit_.start_code_length == 3 ? 1 : 0);
    write_(unit_.head);
}

void Rewriter::InsertInFront() {
    const std::vector<AccessUnit> &access_units = layout_.access_units;
    if (request_.end_of_sequence && layout_.end_of_sequence == units_)
        Insert(messages_.EndOfSequence());
    if (next_access_unit_ == access_units.size())
        return;
    const AccessUnit &access_unit = access_units[next_access_unit_];
    if (units_ == access_unit.first_unit) {
        at_start_ = true;
        start_dropped_ = false;
        if (messages_.GetsDelimiter(access_unit))
            Insert(messages_.Delimiter(access_unit));
    }
    if (units_ == access_unit.first_slice) {
        for (const NalUnitBytes &nal_unit : messages_.Sei(access_unit))
            Insert(nal_unit);
        next_access_unit_++;
    }
}

void Rewriter::Insert(const NalUnitBytes &nal_unit) {
    const bool has_zero_byte = nal_unit[2] == 0;
    WriteZeros(write_, std::exchange(at_start_, false) && !has_zero_byte ? 1 : 0);
    write_(nal_unit);
}

void Rewriter::Finish(uint64_t size) {
    WriteZeros(write_, size - (unit_.offset + unit_.size));
    if (request_.end_of_sequence && layout_.end_of_sequence == units_)
        Insert(messages_.EndOfSequence());
}

}  // namespace h265tool
