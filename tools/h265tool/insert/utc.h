// Points in time, UTC.

#ifndef H265TOOL_INSERT_UTC_H
#define H265TOOL_INSERT_UTC_H

#include <cstdint>
#include <optional>
#include <string>

namespace h265tool {

// Microseconds since 1970 without leap seconds, from "2026-01-31T12:00:00Z" or "...00.ffffffZ" with one to
// six digits. None for anything else, for dates that do not exist and those before 1970.
std::optional<int64_t> ParseUtc(const std::string &text);

}  // namespace h265tool

#endif
