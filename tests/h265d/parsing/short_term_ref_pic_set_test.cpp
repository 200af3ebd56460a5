#include "h265d/parsing/short_term_ref_pic_set.h"

#include <gmock/gmock.h>

#include <random>
#include <set>

#include "support/fields.h"
#include "support/syntax.h"

namespace test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr unsigned long kSets = 64;  // NumShortTermRefPicSets, where it does not matter

// The flags of one picture of the reference set.
enum Use { kDrop = 0, kKeep = 1, kUsed = 2 };

// The bits of sets, without the flag that tells the two kinds apart.
BitString ExplicitSet(const std::vector<uint64_t> &s0, const std::vector<uint64_t> &s1) {
    BitString bits;
    bits.Ue(s0.size()).Ue(s1.size());
    for (const auto *deltas : {&s0, &s1}) {
        for (const uint64_t delta_minus1 : *deltas)
            bits.Ue(delta_minus1).U(1, 1);
    }
    return bits;
}

BitString PredictedSet(int delta_rps, const std::vector<Use> &uses) {
    BitString bits;
    bits.U(1, delta_rps < 0 ? 1 : 0).Ue(static_cast<uint64_t>(std::abs(delta_rps)) - 1);
    for (const Use use : uses) {
        bits.U(1, use == kUsed);
        if (use != kUsed)
            bits.U(1, use == kKeep);
    }
    return bits;
}

class ShortTermRefPicSet : public testing::Test {
 protected:
    ShortTermRefPicSet() {
        std::memset(&strps_, kPrefill, sizeof strps_);
        std::memset(&derived_sets_, kPrefill, sizeof derived_sets_);
    }

    static BitString Flagged(unsigned int flag, const BitString &set) {
        return BitString().U(1, flag).Append(set);
    }

    // Parses one set; returns whether it went well and took exactly these bits.
    bool Takes(const BitString &bits, unsigned long index, unsigned long count = kSets) {
        // more bits behind it, all ones: a reader that wants more gets them
        std::vector<unsigned char> bytes = BitString(bits).U(64, ~uint64_t{0}).Bytes();
        bitbuffer_t bb{bytes.data(), 0, static_cast<unsigned int>(bytes.size()) * 8};
        return _parse_short_term_ref_pic_set(&bb, count, index, &strps_, &derived_sets_) == 0 &&
               bb.bit_offset == bits.size();
    }

    // Begins an SPS with an explicit set of index 0.
    void FirstSet(const std::vector<uint64_t> &s0, const std::vector<uint64_t> &s1) {
        strps_.inter_ref_pic_set_prediction_flag = 0;
        strps_.delta_idx_minus1 = 0;
        ASSERT_TRUE(Takes(ExplicitSet(s0, s1), 0));
    }

    std::vector<std::string> ErrorsOf(const BitString &bits, unsigned long index,
                                      unsigned long count = kSets) {
        const TraceCapture trace(3);
        EXPECT_FALSE(Takes(bits, index, count));
        return trace.Errors();
    }

    void AddExplicit(int num_negative_pics, int num_positive_pics) {
        syntax_.Ue(static_cast<uint64_t>(num_negative_pics), FIELD(strps_, num_negative_pics))
            .Ue(static_cast<uint64_t>(num_positive_pics), FIELD(strps_, num_positive_pics));
        for (int i = 0; i < num_negative_pics; i++)
            syntax_.Ue(static_cast<uint64_t>(3 * i), ENTRY(strps_, delta_poc_s0_minus1, i))
                .Flag(i % 2, ENTRY(strps_, used_by_current_pic_s0_flag, i));
        for (int i = 0; i < num_positive_pics; i++)
            // reported under the name of its s0 sibling
            syntax_.Ue(0xFFFFFFFE, &strps_.delta_poc_s1_minus1[i], Unreadable("delta_poc_s0_minus1", i))
                .Flag(i % 2, ENTRY(strps_, used_by_current_pic_s1_flag, i));
    }

    void AddPredicted(int pictures_of_reference) {
        syntax_.Flag(1, FIELD(strps_, delta_rps_sign)).Ue(0xFFFFFFFE, FIELD(strps_, abs_delta_rps_minus1));
        for (int j = 0; j <= pictures_of_reference; j++) {
            const int used = j % 3 == 0;
            syntax_.Flag(used, ENTRY(strps_, used_by_current_pic_flag, j));
            if (!used)
                syntax_.Flag(j % 2, ENTRY(strps_, used_delta_flag, j));
        }
    }

    // Sweeps a set that comes behind one of two negative pictures and a positive one.
    void Sweep(unsigned long index, unsigned long count = kSets) {
        syntax_.SweepTruncations(&strps_, [&](bitbuffer_t *bb, short_term_ref_pic_set_t *strps) {
            if (index > 0)
                FirstSet({0, 1}, {3});
            std::memset(strps, kPrefill, sizeof *strps);
            strps->inter_ref_pic_set_prediction_flag =
                index == 0 ? 0 : PrefilledValue<int>();  // not coded for index 0
            if (index != count)
                strps->delta_idx_minus1 = 0;
            return _parse_short_term_ref_pic_set(bb, count, index, strps, &derived_sets_) == 0;
        });
    }

    Syntax syntax_;
    short_term_ref_pic_set_t strps_;
    DerivedRefPicSets derived_sets_;
};

TEST_F(ShortTermRefPicSet, ReadsExplicitSetsAndReportsEveryCut) {
    for (const auto &[negative, positive] : {std::pair{0, 0}, {2, 1}, {16, 0}, {0, 16}, {9, 7}}) {
        syntax_ = {};
        AddExplicit(negative, positive);
        Sweep(0);
        EXPECT_THAT(strps_.used_by_current_pic_flag, Each(PrefilledValue<int>()));
        EXPECT_EQ(strps_.abs_delta_rps_minus1, PrefilledValue<UINT64>());
    }
}

TEST_F(ShortTermRefPicSet, LaterSetsSayWhetherTheyArePredicted) {
    syntax_.Flag(0, FIELD(strps_, inter_ref_pic_set_prediction_flag));
    AddExplicit(1, 2);
    Sweep(1);
    syntax_ = {};
    syntax_.Flag(1, FIELD(strps_, inter_ref_pic_set_prediction_flag));
    AddPredicted(3);
    Sweep(1);
    EXPECT_EQ(strps_.num_negative_pics, PrefilledValue<UINT64>());
    EXPECT_EQ(strps_.num_positive_pics, PrefilledValue<UINT64>());
    EXPECT_THAT(strps_.delta_poc_s0_minus1, Each(PrefilledValue<UINT64>()));
    EXPECT_THAT(strps_.delta_poc_s1_minus1, Each(PrefilledValue<UINT64>()));
    EXPECT_EQ(strps_.used_by_current_pic_flag[4], PrefilledValue<int>());
}

TEST_F(ShortTermRefPicSet, TheSetOfASliceHeaderCodesItsDistance) {
    syntax_.Flag(1, FIELD(strps_, inter_ref_pic_set_prediction_flag)).Ue(0, FIELD(strps_, delta_idx_minus1));
    AddPredicted(3);
    Sweep(1, 1);
}

TEST_F(ShortTermRefPicSet, TheRecordDecidesHowSet0IsRead) {
    strps_.inter_ref_pic_set_prediction_flag = 1;
    strps_.delta_idx_minus1 = 0;
    // delta_rps_sign and abs_delta_rps_minus1 are read, then there is no set to refer to
    EXPECT_THAT(ErrorsOf(PredictedSet(-6, {}), 0), ElementsAre(Unreadable("used_by_current_pic_flag", 0)));
    EXPECT_EQ(strps_.inter_ref_pic_set_prediction_flag, 1);
    EXPECT_EQ(strps_.delta_rps_sign, 1);
    EXPECT_EQ(strps_.abs_delta_rps_minus1, 5u);
    EXPECT_THAT(strps_.used_by_current_pic_flag, Each(PrefilledValue<int>()));
    EXPECT_EQ(strps_.num_negative_pics, PrefilledValue<UINT64>());
}

TEST_F(ShortTermRefPicSet, TheRecordDecidesWhichSetIsReferredTo) {
    FirstSet({0, 0, 0, 0, 0}, {});
    ASSERT_TRUE(Takes(Flagged(0, ExplicitSet({0}, {})), 1));
    strps_.delta_idx_minus1 = 1;
    EXPECT_TRUE(Takes(Flagged(1, PredictedSet(-1, std::vector<Use>(6, kUsed))), 2));
    EXPECT_EQ(strps_.delta_idx_minus1, 1u);
}

// ---- what a predicted set consists of (clause 7.4.8) ---------------------------------------------------

TEST_F(ShortTermRefPicSet, APredictedSetHasAFlagForEachPictureAndOneMore) {
    FirstSet({0, 1}, {3});  // -1, -3, 4
    EXPECT_TRUE(Takes(Flagged(1, PredictedSet(-1, {kUsed, kKeep, kUsed, kUsed})), 1));
}

TEST_F(ShortTermRefPicSet, PicturesThatAreDroppedDoNotCount) {
    FirstSet({0, 1}, {3});
    ASSERT_TRUE(Takes(Flagged(1, PredictedSet(-1, {kDrop, kUsed, kDrop, kKeep})), 1));  // -4, -1
    EXPECT_TRUE(Takes(Flagged(1, PredictedSet(5, {kUsed, kUsed, kUsed})), 2));          // 1, 4, 5
    EXPECT_TRUE(Takes(Flagged(1, PredictedSet(5, std::vector<Use>(4, kDrop))), 3));     // none
    EXPECT_TRUE(Takes(Flagged(1, PredictedSet(-2, {kUsed})), 4));
    EXPECT_TRUE(Takes(Flagged(1, PredictedSet(-2, {kUsed, kUsed})), 5));
}

TEST_F(ShortTermRefPicSet, ThePictureItselfDropsOut) {
    for (const int delta_rps : {1, 3, -4}) {  // moves one of the pictures onto the current one
        FirstSet({0, 1}, {3});
        ASSERT_TRUE(Takes(Flagged(1, PredictedSet(delta_rps, std::vector<Use>(4, kUsed))), 1));
        EXPECT_TRUE(Takes(Flagged(1, PredictedSet(1, std::vector<Use>(4, kUsed))), 2));
    }
}

// A reference picture set as a plain set of numbers.
class Model {
 public:
    explicit Model(std::set<int> pictures) : pictures_(std::move(pictures)) {}

    size_t size() const { return pictures_.size(); }

    // The pictures in the order of their flags: before the current one, nearest first; behind it, nearest
    // first; the current one.
    std::vector<int> InOrder() const {
        std::vector<int> order(pictures_.begin(), pictures_.lower_bound(0));
        std::reverse(order.begin(), order.end());
        order.insert(order.end(), pictures_.lower_bound(0), pictures_.end());
        order.push_back(0);
        return order;
    }

    Model Moved(int delta_rps, const std::vector<Use> &uses) const {
        std::set<int> moved;
        const std::vector<int> order = InOrder();
        for (size_t j = 0; j < order.size(); j++) {
            if (uses[j] != kDrop && order[j] + delta_rps != 0)
                moved.insert(order[j] + delta_rps);
        }
        return Model(moved);
    }

 private:
    std::set<int> pictures_;
};

// Random legal sets, each as bits and as a model.
class RandomSets {
 public:
    int Roll(int first, int last) {
        return first + static_cast<int>(random_() % static_cast<unsigned int>(last - first + 1));
    }

    std::pair<BitString, Model> Explicit() {
        std::set<int> pictures;
        std::vector<uint64_t> deltas_minus1[2];
        for (const int sign : {-1, 1}) {
            int picture = 0;
            for (int n = Roll(0, 7); n > 0; n--) {
                const int delta = Roll(1, 4);
                deltas_minus1[sign > 0].push_back(static_cast<uint64_t>(delta - 1));
                pictures.insert(picture += sign * delta);
            }
        }
        return {ExplicitSet(deltas_minus1[0], deltas_minus1[1]), Model(pictures)};
    }

    std::pair<BitString, Model> Predicted(const Model &reference) {
        const int delta_rps = Roll(1, 6) * (Roll(0, 1) ? 1 : -1);
        const int drops = reference.size() > 12 ? 6 : Roll(0, 2);  // of 10
        std::vector<Use> uses;
        for (size_t j = 0; j <= reference.size(); j++)
            uses.push_back(Roll(1, 10) <= drops ? kDrop : Roll(0, 1) ? kKeep : kUsed);
        if (reference.Moved(delta_rps, uses).size() > 15)  // more than H.265 has
            uses.back() = kDrop;
        return {PredictedSet(delta_rps, uses), reference.Moved(delta_rps, uses)};
    }

 private:
    std::mt19937 random_{265};
};

TEST_F(ShortTermRefPicSet, RandomChainsAgreeWithAModel) {
    RandomSets random;
    int predicted_from_predicted = 0;
    for (int chain = 0; chain < 3000; chain++) {
        std::vector<Model> models;
        std::vector<bool> is_predicted;
        const int sets = chain % 16 == 0 ? 64 : random.Roll(2, 12);
        for (int index = 0; index < sets; index++) {
            const bool predicted = index > 0 && random.Roll(0, 9) > 0;
            const int distance = index > 0 && random.Roll(0, 2) == 0 ? random.Roll(1, index) : 1;
            const size_t reference = predicted ? static_cast<size_t>(index - distance) : 0;
            predicted_from_predicted += predicted && is_predicted[reference];
            is_predicted.push_back(predicted);
            const auto &[bits, model] = predicted ? random.Predicted(models[reference]) : random.Explicit();
            models.push_back(model);
            strps_.inter_ref_pic_set_prediction_flag = 0;
            strps_.delta_idx_minus1 = static_cast<UINT64>(distance) - 1;
            ASSERT_TRUE(Takes(index > 0 ? Flagged(predicted, bits) : bits, static_cast<unsigned long>(index)))
                << "set " << index << " of chain " << chain;
        }
    }
    EXPECT_GT(predicted_from_predicted, 10000);
}

// ---- references that lead nowhere ----------------------------------------------------------------------

TEST_F(ShortTermRefPicSet, AReferenceOutsideTheSetsReadSoFarFails) {
    // in front of set 0; to itself and beyond, by way of 32-bit arithmetic
    for (const UINT64 delta_idx_minus1 :
         {UINT64{2}, UINT64{64}, UINT64{0x7FFFFFFF}, UINT64{0xFFFFFFFF}, UINT64{0xFFFFFFFE},
          UINT64{0xFFFFFFF0}, UINT64{INT64_MAX}, PrefilledValue<UINT64>(), ~UINT64{0}}) {
        SCOPED_TRACE(delta_idx_minus1);
        FirstSet({0, 1}, {3});
        ASSERT_TRUE(Takes(Flagged(0, ExplicitSet({}, {})), 1));
        strps_.delta_idx_minus1 = delta_idx_minus1;
        EXPECT_THAT(ErrorsOf(Flagged(1, PredictedSet(2, {})), 2),
                    ElementsAre(Unreadable("used_by_current_pic_flag", 0)));
        EXPECT_EQ(strps_.delta_idx_minus1, delta_idx_minus1);
        EXPECT_EQ(strps_.abs_delta_rps_minus1, 1u);
    }
}

TEST_F(ShortTermRefPicSet, TheSetsOfAnEarlierSpsAreGone) {
    FirstSet({0, 1}, {3});
    for (unsigned long index = 1; index < 8; index++)
        ASSERT_TRUE(Takes(Flagged(0, ExplicitSet({0}, {0})), index));
    strps_.inter_ref_pic_set_prediction_flag = 1;
    strps_.delta_idx_minus1 = 0xFFFFFFFA;  // set 5 in 32-bit arithmetic
    EXPECT_THAT(ErrorsOf(PredictedSet(2, {}), 0), ElementsAre(Unreadable("used_by_current_pic_flag", 0)));
    FirstSet({0}, {});
    EXPECT_TRUE(Takes(Flagged(1, PredictedSet(-1, {kUsed, kUsed})), 1));
    strps_.delta_idx_minus1 = 0xFFFFFFFC;  // set 5 again
    EXPECT_THAT(ErrorsOf(Flagged(1, PredictedSet(2, {})), 2),
                ElementsAre(Unreadable("used_by_current_pic_flag", 0)));
}

TEST_F(ShortTermRefPicSet, ASetThatFailedCannotBeReferredTo) {
    FirstSet({0}, {});
    EXPECT_THAT(ErrorsOf(Flagged(0, BitString().Ue(1).Ue(17)), 1),
                ElementsAre(Unreadable("num_positive_pics")));
    EXPECT_THAT(ErrorsOf(Flagged(1, PredictedSet(2, {})), 2),
                ElementsAre(Unreadable("used_by_current_pic_flag", 0)));
}

TEST_F(ShortTermRefPicSet, AnotherParseHasSetsOfItsOwn) {
    FirstSet({0, 1}, {3});
    std::vector<unsigned char> bytes = ExplicitSet({}, {}).Bytes();
    bitbuffer_t bb{bytes.data(), 0, 2};
    short_term_ref_pic_set_t strps{};
    DerivedRefPicSets derived_sets;
    EXPECT_EQ(_parse_short_term_ref_pic_set(&bb, kSets, 0, &strps, &derived_sets), 0);
    EXPECT_TRUE(Takes(Flagged(1, PredictedSet(-1, std::vector<Use>(4, kUsed))), 1));
}

// ---- counts beyond what H.265 has ----------------------------------------------------------------------

TEST_F(ShortTermRefPicSet, EachSideMayHave16Pictures) {
    for (const auto &[negative, positive] : {std::pair{9, 8}, {16, 1}, {1, 16}, {16, 16}}) {
        FirstSet(std::vector<uint64_t>(static_cast<size_t>(negative), 0),
                 std::vector<uint64_t>(static_cast<size_t>(positive), 0));
        EXPECT_EQ(strps_.num_negative_pics, static_cast<UINT64>(negative));
        EXPECT_EQ(strps_.num_positive_pics, static_cast<UINT64>(positive));
        // nothing is predicted from more pictures than a record has flags for
        EXPECT_THAT(ErrorsOf(Flagged(1, PredictedSet(2, {})), 1),
                    ElementsAre(Unreadable("used_by_current_pic_flag", 16)));
    }
}

TEST_F(ShortTermRefPicSet, MoreThan16PicturesAreUnreadable) {
    strps_.inter_ref_pic_set_prediction_flag = 0;
    for (const uint64_t count : {uint64_t{17}, uint64_t{0xFFFFFFFE}}) {
        EXPECT_THAT(ErrorsOf(BitString().Ue(count), 0), ElementsAre(Unreadable("num_negative_pics")));
        EXPECT_EQ(strps_.num_negative_pics, PrefilledValue<UINT64>());
    }
    for (const auto &[negative, positive] :
         {std::pair{uint64_t{0}, uint64_t{17}}, {16, 17}, {1, 0xFFFFFFFE}}) {
        EXPECT_THAT(ErrorsOf(BitString().Ue(negative).Ue(positive), 0),
                    ElementsAre(Unreadable("num_positive_pics")));
        EXPECT_EQ(strps_.num_positive_pics, PrefilledValue<UINT64>());
    }
}

// Nothing is derived behind the last picture that a set can have.
TEST_F(ShortTermRefPicSet, SixteenPicturesLeaveTheNextSetAlone) {
    DerivedRefPicSet prefilled;
    std::memset(&prefilled, kPrefill, sizeof prefilled);
    const std::vector<uint64_t> pictures(16, 0);
    FirstSet({}, pictures);
    EXPECT_EQ(derived_sets_.sets[0].DeltaPocS1[15], 16);
    EXPECT_EQ(std::memcmp(&derived_sets_.sets[1], &prefilled, sizeof prefilled), 0);
    FirstSet(pictures, {});
    EXPECT_EQ(derived_sets_.sets[0].DeltaPocS0[15], -16);
    EXPECT_EQ(std::memcmp(&derived_sets_.sets[1], &prefilled, sizeof prefilled), 0);
}

TEST_F(ShortTermRefPicSet, APredictedSetOf17FlagsFailsAtTheLast) {
    FirstSet(std::vector<uint64_t>(8, 0), std::vector<uint64_t>(7, 0));
    ASSERT_TRUE(Takes(Flagged(1, PredictedSet(100, std::vector<Use>(16, kUsed))), 1));  // all are kept: 16
    EXPECT_THAT(ErrorsOf(Flagged(1, PredictedSet(1, std::vector<Use>(17, kUsed))), 2),
                ElementsAre(Unreadable("used_by_current_pic_flag", 16)));
    EXPECT_EQ(strps_.used_by_current_pic_flag[15], 1);
    EXPECT_EQ(strps_.used_delta_flag[0], PrefilledValue<int>());  // behind the other array
}

TEST_F(ShortTermRefPicSet, DistancesBeyond32BitsDoNoHarm) {
    const uint64_t farthest = 0xFFFFFFFE;
    FirstSet({farthest, farthest, 0x7FFFFFFF}, {farthest, 0x80000000});
    BitString bits = BitString().U(2, 0b10).Ue(farthest);
    for (int j = 0; j <= 5; j++)
        bits.U(1, 1);
    EXPECT_TRUE(Takes(bits, 1));
}

TEST_F(ShortTermRefPicSet, SixtyFourIsTheLastIndex) {
    FirstSet({}, {});
    for (unsigned long index = 1; index <= 64; index++)
        ASSERT_TRUE(Takes(Flagged(0, ExplicitSet({0}, {})), index, 65));
    EXPECT_THAT(ErrorsOf(Flagged(0, ExplicitSet({0}, {})), 65), IsEmpty());
}

// ---- traces and arguments ------------------------------------------------------------------------------

TEST_F(ShortTermRefPicSet, TracesEachSet) {
    const TraceCapture trace;
    FirstSet({0, 1}, {3});
    ASSERT_TRUE(Takes(Flagged(1, PredictedSet(1, std::vector<Use>(4, kUsed))), 1));
    EXPECT_THAT(trace.Texts(7), ElementsAre("Called.\n", "After num_negative_pics:2, CurrentBitOffset:3.\n",
                                            "Done.\n", "Called.\n", "Done.\n"));
    EXPECT_THAT(trace.Texts(6),
                ElementsAre("--- short_term_ref_pic_set[0] ---\n", "--- short_term_ref_pic_set[1] ---\n"));
    ASSERT_EQ(trace.messages().size(), 7u);
    EXPECT_THAT(trace.messages()[1].text, StartsWith("---"));  // right behind the entry
    for (const TracedMessage &message : trace.messages())
        EXPECT_EQ(message.function, "_parse_short_term_ref_pic_set");
}

TEST_F(ShortTermRefPicSet, NullArgumentsFailSilently) {
    bitbuffer_t bb{};
    const TraceCapture trace;
    EXPECT_EQ(_parse_short_term_ref_pic_set(nullptr, 1, 0, &strps_, &derived_sets_), -1);
    EXPECT_EQ(_parse_short_term_ref_pic_set(&bb, 1, 0, nullptr, &derived_sets_), -1);
    EXPECT_EQ(_parse_short_term_ref_pic_set(&bb, 1, 0, &strps_, nullptr), -1);
    EXPECT_THAT(trace.messages(), IsEmpty());
}

}  // namespace
}  // namespace test
