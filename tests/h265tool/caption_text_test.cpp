#include "caption_text.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace h265tool {
namespace {

SEI_cc_t Captions(std::initializer_list<caption_t> constructs) {
    SEI_cc_t captions{};
    for (const caption_t &construct : constructs)
        captions.cc_bytes[captions.cc_data.cc_count++] = construct;
    return captions;
}

std::string Field1(unsigned char data1, unsigned char data2) {
    return Cea608Text(Captions({{1, kField1, data1, data2}}), kField1);
}

TEST(Cea608Text, PrintsCharactersWithoutParity) {
    EXPECT_EQ(Field1(0xC8, 0xE5), "He");
    EXPECT_EQ(Field1('H', 'i'), "Hi");
    EXPECT_EQ(Field1('A', 0x80), "A");  // padding
    EXPECT_EQ(Field1(0x80, 0x80), "");
    EXPECT_EQ(Field1(0x2A, 0x7E), "áñ");
    EXPECT_EQ(Field1(0x5C, 0x5E), "éí");
    EXPECT_EQ(Field1(0x5F, 0x60), "óú");
    EXPECT_EQ(Field1(0x7B, 0x7C), "ç÷");
    EXPECT_EQ(Field1(0x7D, 0x7F), "Ñ█");
    EXPECT_EQ(Field1('A', 0x14), "{4114}");
}

TEST(Cea608Text, NamesControlCodes) {
    EXPECT_EQ(Field1(0x94, 0x20), "{RCL}");
    EXPECT_EQ(Field1(0x1C, 0x2F), "{EOC}");  // the second channel
    EXPECT_EQ(Field1(0x15, 0x2C), "{EDM}");  // as the second field has it
    EXPECT_EQ(Field1(0x17, 0x21), "{TO1}");
    EXPECT_EQ(Field1(0x17, 0x23), "{TO3}");
    EXPECT_EQ(Field1(0x17, 0x24), "{1724}");
    EXPECT_EQ(Field1(0x14, 0x70), "{1470}");  // preamble address
    EXPECT_EQ(Field1(0x11, 0x2E), "{112e}");  // mid-row
    EXPECT_EQ(Field1(0x91, 0x37), "♪");
    EXPECT_EQ(Field1(0x01, 0x03), "{0103}");  // XDS
}

TEST(Cea608Text, TellsFieldsApartAndSkipsWhatIsNotValid) {
    const SEI_cc_t captions = Captions({{1, kField1, 'A', 'B'},
                                        {1, kField2, 'x', 'y'},
                                        {0, kField1, 'n', 'o'},
                                        {1, kDtvccStart, 0xC6, 0x02},
                                        {1, kDtvccData, 0x21, 0x41},
                                        {0, kDtvccData, 0xFF, 0xFF},
                                        {1, kField1, 'C', 0}});
    EXPECT_EQ(Cea608Text(captions, kField1), "ABC");
    EXPECT_EQ(Cea608Text(captions, kField2), "xy");
    EXPECT_EQ(DtvccText(captions), "|c6022141");
}

}  // namespace
}  // namespace h265tool
