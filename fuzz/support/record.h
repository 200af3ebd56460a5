// Records as careless callers pass them: they hold anything.

#ifndef FUZZ_SUPPORT_RECORD_H
#define FUZZ_SUPPORT_RECORD_H

#include <memory>
#include <type_traits>

#include "support/fuzz_input.h"

namespace fuzz {

// Zeros, one byte over and over, random bytes, or random small numbers; then single bytes of the input at
// single places.
void Fill(FuzzInput *input, unsigned char *bytes, size_t size);

template <typename Record>
std::unique_ptr<Record> AnyRecord(FuzzInput *input) {
    static_assert(std::is_trivially_copyable_v<Record>);
    auto record = std::make_unique<Record>();
    Fill(input, reinterpret_cast<unsigned char *>(record.get()), sizeof(Record));
    return record;
}

}  // namespace fuzz

#endif
