// The usual case of an element in a test: a record field, and a report that names it.
//
//     syntax.Ue(1920, FIELD(sps, pic_width_in_luma_samples))
//         .Flag(1, ENTRY(vps, layer_id_included_flag, i, j));

#ifndef TESTS_SUPPORT_FIELDS_H
#define TESTS_SUPPORT_FIELDS_H

#include <string>

namespace test {

// "cannot parse <element>[<index>]...\n"
template <typename... Indices>
std::string Unreadable(const std::string &element, Indices... indices) {
    return "cannot parse " + element + (std::string() + ... + ("[" + std::to_string(indices) + "]")) + ".\n";
}

template <typename Array>
auto *At(Array &array, int i) {
    return &array[i];
}

template <typename Array>
auto *At(Array &array, int i, int j) {
    return &array[i][j];
}

// Entry i, or null (a value that is not kept) when the record has no such entry.
template <typename Value, int size>
Value *KeptAt(Value (&array)[size], int i) {
    return i < size ? &array[i] : nullptr;
}

}  // namespace test

#define FIELD(record, element) &(record).element, test::Unreadable(#element)
#define ENTRY(record, element, ...) \
    test::At((record).element, __VA_ARGS__), test::Unreadable(#element, __VA_ARGS__)
#define KEPT_ENTRY(record, element, i) test::KeptAt((record).element, i), test::Unreadable(#element, i)

#endif
