// What is to be inserted, as the command line says.

#ifndef H265TOOL_INSERT_REQUEST_H
#define H265TOOL_INSERT_REQUEST_H

#include <cstdint>
#include <optional>
#include <vector>

#include "insert.h"
#include "insert/scc.h"
#include "insert/sei_messages.h"
#include "insert/time_code.h"
#include "rate.h"

namespace h265tool {

struct Request {
    std::optional<std::vector<CaptionPair>> captions;
    std::optional<unsigned char> active_format;
    std::optional<TimeCode> time_code;
    std::optional<int64_t> precision_time;
    std::vector<unsigned char> pic_structs;  // repeating; empty: no picture timing
    std::optional<Rate> rate;
    bool delimiters = false;
    bool end_of_sequence = false;
    bool replace = false;

    bool Wants(SeiKind kind) const;
};

// Reads the SCC file too. Throws UsageError.
Request MakeRequest(const InsertOptions &options);

}  // namespace h265tool

#endif
