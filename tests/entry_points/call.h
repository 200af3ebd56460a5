// Every exported function as a call that makes it do its work, for the tests that hold for all of them.

#ifndef TESTS_ENTRY_POINTS_CALL_H
#define TESTS_ENTRY_POINTS_CALL_H

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "support/nal_unit.h"

namespace test {

// What records and buffers hold before a call: the same word throughout, or what malloc happens to give.
using Fill = std::optional<uint32_t>;

// Byte i of memory of that fill.
inline unsigned char ByteOf(uint32_t fill, size_t i) {
    unsigned char bytes[sizeof fill];
    std::memcpy(bytes, &fill, sizeof fill);
    return bytes[i % sizeof fill];
}

template <typename Record>
std::shared_ptr<Record> Filled(Fill fill) {
    const auto memory = static_cast<unsigned char *>(std::malloc(sizeof(Record)));
    for (size_t i = 0; fill && i < sizeof(Record); i++)
        memory[i] = ByteOf(*fill, i);
    return {reinterpret_cast<Record *>(memory), std::free};
}

// The memory of a record or an array, padding included.
template <typename Record>
std::function<Bytes()> MemoryOf(std::shared_ptr<Record> record) {
    return [record] {
        Bytes bytes(sizeof(Record));
        std::memcpy(bytes.data(), record.get(), bytes.size());
        return bytes;
    };
}

// Several values, one behind the other, without padding.
template <typename... Values>
Bytes Packed(const Values &...values) {
    Bytes bytes;
    const auto append = [&bytes](const auto &value) {
        const size_t size = bytes.size();
        bytes.resize(size + sizeof value);
        std::memcpy(bytes.data() + size, &value, sizeof value);
    };
    (append(values), ...);
    return bytes;
}

// A call that is ready to be made, once.
struct Call {
    std::function<int64_t()> run;                             // gives what the function returns
    std::function<Bytes()> outputs = [] { return Bytes(); };  // what the function may have written to
    std::function<bool()> failed_as_documented = {};          // when a failure may change outputs
    std::function<void()> release = [] {};
};

struct EntryPoint {
    const char *function;
    const char *variant;
    Call (*prepare)(Fill fill);
    int allocations = 0;  // heap blocks that the call takes
    int blocks_left = 0;  // how many more there are behind the call than before it
    bool one_thread_at_a_time = false;
};

void PrintTo(const EntryPoint &entry_point, std::ostream *out);
std::string NameOf(const EntryPoint &entry_point);

// All of them, by library and area.
std::vector<EntryPoint> EntryPoints();
std::vector<EntryPoint> TraceEntryPoints();
std::vector<EntryPoint> BitReadingEntryPoints();
std::vector<EntryPoint> BitWritingEntryPoints();
std::vector<EntryPoint> FramingEntryPoints();
std::vector<EntryPoint> ParameterSetEntryPoints();
std::vector<EntryPoint> RewritingEntryPoints();
std::vector<EntryPoint> SeiReadingEntryPoints();
std::vector<EntryPoint> SeiBuildingEntryPoints();

}  // namespace test

#endif
