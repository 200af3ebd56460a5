// A field of a record, or an entry of one that is an array, by its indices: what the macros of read.h and
// write.h make of (record, element, i, j).

#ifndef H265_COMMON_ENTRY_H
#define H265_COMMON_ENTRY_H

#define ENTRY_(record, element, ...) Entry((record)->element __VA_OPT__(, ) __VA_ARGS__)

template <typename Field>
inline Field &Entry(Field &field) {
    return field;
}

template <typename Array, typename Index>
inline auto &Entry(Array &array, Index i) {
    return array[i];
}

template <typename Array, typename Index>
inline auto &Entry(Array &array, Index i, Index j) {
    return array[i][j];
}

#endif
