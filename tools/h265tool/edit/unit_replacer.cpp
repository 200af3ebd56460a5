#include "edit/unit_replacer.h"

#include <array>
#include <utility>

namespace h265tool {

UnitReplacer::UnitReplacer(const Replacements &replacements, WriteBytes write)
    : replacements_(replacements), write_(std::move(write)), next_(replacements_.begin()) {}

void UnitReplacer::Begin(uint64_t offset, unsigned int start_code_length) {
    static constexpr std::array<unsigned char, 4> kStartCode = {0, 0, 0, 1};
    WriteZeros(write_, offset - end_);
    end_ = offset + start_code_length;
    replaced_ = next_ != replacements_.end() && next_->first == units_;
    if (replaced_)
        write_(next_++->second);
    else
        write_(std::span(kStartCode).last(start_code_length));
}

void UnitReplacer::Bytes(std::span<const unsigned char> bytes) {
    end_ += bytes.size();
    if (!replaced_)
        write_(bytes);
}

void UnitReplacer::End() {
    units_++;
}

void UnitReplacer::Finish(uint64_t size) {
    WriteZeros(write_, size - end_);
}

}  // namespace h265tool
