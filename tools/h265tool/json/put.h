// Puts record fields into JSON objects.

#ifndef H265TOOL_JSON_PUT_H
#define H265TOOL_JSON_PUT_H

#include "json/json.h"

namespace h265tool {

template <typename Field>
void Put(Json *at, const Field &field) {
    *at = field;
}

// One entry of an array; entries in front of it that do not exist become null.
template <typename Field, typename... Indices>
void Put(Json *at, const Field &field, int index, Indices... indices) {
    Put(&(*at)[static_cast<size_t>(index)], field[index], indices...);
}

// One field, or one entry of an array field, under its name: PUT(json, hrd, cbr_flag, i).
#define PUT(json, record, field, ...) \
    ::h265tool::Put(&(json)[#field], (record).field __VA_OPT__(, ) __VA_ARGS__)

}  // namespace h265tool

#endif
