// pic_struct of picture timing, Table D.2.

#ifndef H265TOOL_PIC_STRUCT_H
#define H265TOOL_PIC_STRUCT_H

namespace h265tool {

constexpr unsigned int kMaxPicStruct = 12;

constexpr bool IsField(unsigned char pic_struct) {
    return pic_struct == 1 || pic_struct == 2 || pic_struct >= 9;
}

// Pictures are all fields or all frames.
constexpr bool FitsFieldSeq(unsigned char pic_struct, int field_seq_flag) {
    return IsField(pic_struct) == (field_seq_flag != 0);
}

}  // namespace h265tool

#endif
