// Gets record fields out of JSON objects: the counterpart of put.h.

#ifndef H265TOOL_JSON_GET_H
#define H265TOOL_JSON_GET_H

#include <cstdint>
#include <stdexcept>
#include <string>

#include "json/json.h"
#include "text.h"

namespace h265tool {

// A value is missing or wrong; what() names it.
class JsonError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

// A value in a JSON document. Null where there is none, which only its use complains about.
struct JsonValue {
    const Json *json;
    std::string path;  // "s_l_nal_hrd_parameters[0].cbr_flag[1]"

    JsonValue Member(const std::string &name) const {
        const bool there = json != nullptr && json->is_object() && json->contains(name);
        return {there ? &json->at(name) : nullptr, path.empty() ? name : Text(path, ".", name)};
    }
    JsonValue Entry(int index) const {
        const auto i = static_cast<size_t>(index);
        const bool there = json != nullptr && json->is_array() && i < json->size();
        return {there ? &json->at(i) : nullptr, Text(path, "[", index, "]")};
    }
};

// A number from 0 to max.
template <typename Field>
void Get(const JsonValue &value, uint64_t max, Field *field) {
    if (value.json == nullptr || value.json->is_null())
        throw JsonError(value.path + " is missing");
    const bool is_number = value.json->is_number_unsigned() ||
                           (value.json->is_number_integer() && value.json->template get<int64_t>() >= 0);
    if (!is_number || value.json->template get<uint64_t>() > max)
        throw JsonError(Text(value.path, " is no number from 0 to ", max));
    *field = static_cast<Field>(value.json->template get<uint64_t>());
}

// One entry of an array.
template <typename Field, size_t size>
void Get(const JsonValue &value, uint64_t max, Field (*field)[size], int index) {
    Get(value.Entry(index), max, &(*field)[index]);
}

// One field, or one entry of an array field, from under its name: GET(value, 31, hrd, cpb_cnt_minus1, i).
#define GET(value, max, record, field, ...) \
    ::h265tool::Get((value).Member(#field), max, &(record)->field __VA_OPT__(, ) __VA_ARGS__)

}  // namespace h265tool

#endif
