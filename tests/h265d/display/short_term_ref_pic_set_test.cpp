#include <algorithm>

#include "h265d/display/expected_display.h"
#include "h265d/display/sub_structures.h"
#include "support/silence.h"

namespace test {
namespace {

class ShortTermRefPicSetDisplay : public testing::Test {
 protected:
    static ExpectedDisplay Start(int index) {
        ExpectedDisplay expected("_display_short_term_ref_pic_set", 6);
        expected.Step("Called.\n");
        expected.Text("--- short_term_ref_pic_set[" + std::to_string(index) + "] ---\n");
        return expected;
    }

    // A set with so many pictures on either side; the lines of its display.
    static ExpectedDisplay Explicit(short_term_ref_pic_set_t *set, int index, UINT64 negative,
                                    UINT64 positive) {
        ExpectedDisplay expected = Start(index);
        LINE(expected, *set, inter_ref_pic_set_prediction_flag, 0);
        LINE(expected, *set, num_negative_pics, negative);
        LINE(expected, *set, num_positive_pics, positive);
        for (int i = 0; i < static_cast<int>(negative); i++) {
            ENTRY_LINE(expected, *set, delta_poc_s0_minus1, i, static_cast<UINT64>(i));
            ENTRY_LINE(expected, *set, used_by_current_pic_s0_flag, i, (i + 1) % 2);
        }
        for (int i = 0; i < static_cast<int>(positive); i++) {
            ENTRY_LINE(expected, *set, delta_poc_s1_minus1, i, static_cast<UINT64>(i + 7));
            ENTRY_LINE(expected, *set, used_by_current_pic_s1_flag, i, i % 2);
        }
        expected.Step("Done.\n");
        return expected;
    }

    // A set that is predicted from one with so many pictures, of which every second is kept.
    static ExpectedDisplay Predicted(short_term_ref_pic_set_t *set, int index, bool in_slice, int flags) {
        ExpectedDisplay expected = Start(index);
        LINE(expected, *set, inter_ref_pic_set_prediction_flag, 1);
        if (in_slice)
            LINE(expected, *set, delta_idx_minus1, 1);
        LINE(expected, *set, delta_rps_sign, 1);
        LINE(expected, *set, abs_delta_rps_minus1, 99);
        for (int j = 0; j < flags; j++) {
            ENTRY_LINE(expected, *set, used_by_current_pic_flag, j, j % 2);
            if (j % 2 == 0)
                ENTRY_LINE(expected, *set, used_delta_flag, j, 0);
        }
        expected.Step("Done.\n");
        return expected;
    }

    void Display(const short_term_ref_pic_set_t *set, UINT64 index, UINT64 count) {
        EXPECT_EQ(_display_short_term_ref_pic_set(set, index, count, &derived_sets_), 0);
    }

    DerivedRefPicSets derived_sets_;
};

TEST_F(ShortTermRefPicSetDisplay, ExplicitSets) {
    for (const auto &[negative, positive] : {std::pair{0, 0}, {2, 1}, {0, 16}, {16, 0}, {16, 16}}) {
        short_term_ref_pic_set_t set{};
        const ExpectedDisplay expected =
            Explicit(&set, 0, static_cast<UINT64>(negative), static_cast<UINT64>(positive));
        EXPECT_EQ(expected.AtLevel(6).size(), static_cast<size_t>(4 + 2 * (negative + positive)));
        ExpectDisplay(
            set, [this](const short_term_ref_pic_set_t *record) { Display(record, 0, 1); }, expected);
    }
}

TEST_F(ShortTermRefPicSetDisplay, PredictedSetsHaveTheFlagsOfTheirReference) {
    short_term_ref_pic_set_t sets[4]{};
    Explicit(&sets[0], 0, 3, 2);
    const ExpectedDisplay from_explicit = Predicted(&sets[1], 1, false, 6);
    // set 1 keeps pictures 1 and 3 of set 0, and the picture at its own distance
    const ExpectedDisplay from_predicted = Predicted(&sets[2], 2, false, 4);
    const ExpectedDisplay in_slice = Predicted(&sets[3], 3, true, 4);
    const auto show_up_to = [&](int last) {
        for (int i = 0; i < last; i++)
            Display(&sets[i], static_cast<UINT64>(i), 3);
    };
    for (const auto &[index, expected] :
         {std::pair{1, &from_explicit}, {2, &from_predicted}, {3, &in_slice}}) {
        const TraceCapture trace(8);
        show_up_to(index);
        const size_t before = trace.Texts(6).size();
        Display(&sets[index], static_cast<UINT64>(index), 3);
        std::vector<std::string> texts = trace.Texts(6);
        texts.erase(texts.begin(), texts.begin() + static_cast<std::ptrdiff_t>(before));
        std::vector<std::string> lines;
        for (const DisplayedLine &line : expected->AtLevel(6))
            lines.push_back(line.text);
        EXPECT_EQ(texts, lines) << index;
        InSilence([&, i = index] { Display(&sets[i], static_cast<UINT64>(i), 3); });
    }
}

TEST_F(ShortTermRefPicSetDisplay, NoMoreFlagsThanTheRecordHolds) {
    short_term_ref_pic_set_t sets[2]{};
    for (const UINT64 pictures : {15u, 16u}) {
        Explicit(&sets[0], 0, pictures, 0);
        Predicted(&sets[1], 1, false, 16);
        Display(&sets[0], 0, 2);
        EXPECT_EQ(DisplayedTexts(6, [&] { Display(&sets[1], 1, 2); }).size(), 4 + 16 + 8u);
    }
}

TEST_F(ShortTermRefPicSetDisplay, ASetOf16PicturesHasNoneDerivedFromIt) {
    for (const auto &[pictures, flags] : {std::pair{15, 16 / 2 + 1}, {16, 1}}) {
        short_term_ref_pic_set_t sets[3]{};
        Explicit(&sets[0], 0, static_cast<UINT64>(pictures), 0);
        Predicted(&sets[1], 1, false, 16);  // keeps every second one of 15, and that at its own distance
        Display(&sets[0], 0, 3);
        Display(&sets[1], 1, 3);
        const ExpectedDisplay expected = Predicted(&sets[2], 2, false, flags);
        std::vector<std::string> lines;
        for (const DisplayedLine &line : expected.AtLevel(6))
            lines.push_back(line.text);
        EXPECT_EQ(DisplayedTexts(6, [&] { Display(&sets[2], 2, 3); }), lines) << pictures;
    }
}

TEST_F(ShortTermRefPicSetDisplay, AReferenceOutsideTheSetsHasNoFlags) {
    short_term_ref_pic_set_t set{};
    const ExpectedDisplay expected = Predicted(&set, 0, false, 0);
    ExpectDisplay(
        set, [this](const short_term_ref_pic_set_t *record) { Display(record, 0, 1); }, expected);
}

TEST_F(ShortTermRefPicSetDisplay, ASetThatRefersToItselfHasNoFlags) {
    short_term_ref_pic_set_t set{};
    set.num_positive_pics = 15;
    Display(&set, 0, 5);
    Display(&set, 1, 5);
    set.inter_ref_pic_set_prediction_flag = 1;
    set.delta_idx_minus1 = ~UINT64{0};  // set 1 itself, in 32-bit arithmetic
    set.delta_rps_sign = 1;
    set.abs_delta_rps_minus1 = 0x4FFFFFFF;
    std::fill_n(set.used_by_current_pic_flag, H265_RPS_PICTURES, 1);
    const TraceCapture trace(6);
    Display(&set, 1, 5);
    EXPECT_EQ(trace.Texts(6).back(), "abs_delta_rps_minus1=1342177279.\n");
}

TEST_F(ShortTermRefPicSetDisplay, AnyRecordStaysWithinItsArrays) {
    for (const int byte : {0xFF, 0xA5}) {
        for (const UINT64 index : {UINT64{0}, UINT64{1}, UINT64{63}, UINT64{64}, UINT64{65}, ~UINT64{0}}) {
            const size_t count = MessagesOfFilledRecord<short_term_ref_pic_set_t>(
                byte,
                [=, this](const short_term_ref_pic_set_t *record) { Display(record, index, ~UINT64{0}); });
            EXPECT_LE(count, 6u + 64u) << index;
        }
    }
    short_term_ref_pic_set_t set{};
    set.num_negative_pics = ~UINT64{0};
    set.num_positive_pics = 0x1'0000'0001;
    EXPECT_EQ(DisplayedTexts(6, [&] { Display(&set, 0, 1); }).size(), 4 + 64u);
}

TEST_F(ShortTermRefPicSetDisplay, WithoutTablesNothingIsPrinted) {
    const short_term_ref_pic_set_t set{};
    EXPECT_THAT(
        DisplayedTexts(7, [&] { EXPECT_EQ(_display_short_term_ref_pic_set(&set, 0, 1, nullptr), 0); }),
        testing::IsEmpty());
}

TEST_F(ShortTermRefPicSetDisplay, ArgumentsAreChecked) {
    ExpectNullIsReported("strps != NULL", [this] { Display(nullptr, 0, 0); });
    short_term_ref_pic_set_t set{};
    const TraceCapture trace(6);
    Display(&set, 2, 1);
    EXPECT_THAT(trace.Assertions(),
                testing::ElementsAre(AssertionOf("StRpsIndex <= NumShortTermRefPicSets")));
    EXPECT_EQ(trace.Texts(6).front(), "--- short_term_ref_pic_set[2] ---\n");
}

}  // namespace
}  // namespace test
