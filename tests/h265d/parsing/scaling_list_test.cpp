#include "h265d/parsing/scaling_list.h"

#include <gmock/gmock.h>

#include "support/fields.h"
#include "support/syntax.h"

namespace test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

class ScalingList : public testing::Test {
 protected:
    ScalingList() { std::memset(&lists_, kPrefill, sizeof lists_); }

    // Calls list(sizeId, matrixId) for each list that is coded.
    template <typename List>
    static void ForEachList(List list) {
        for (int sizeId = 0; sizeId < 4; sizeId++) {
            for (const int matrixId : sizeId < 3 ? std::vector{0, 1, 2, 3, 4, 5} : std::vector{0, 3})
                list(sizeId, matrixId);
        }
    }

    static int CoefNum(int sizeId) { return sizeId == 0 ? 16 : 64; }

    void PredictedList(int sizeId, int matrixId) {
        syntax_.Flag(0, ENTRY(lists_, scaling_list_pred_mode_flag, sizeId, matrixId))
            .Ue(static_cast<uint64_t>(sizeId + matrixId),
                ENTRY(lists_, scaling_list_pred_matrix_id_delta, sizeId, matrixId));
    }

    // The flag and, for the two larger sizes, the DC coefficient. All that follows the flag of a coded list
    // is reported under the name of the delta of a predicted one.
    void CodedListHead(int sizeId, int matrixId, int dc_coef_minus8 = 0) {
        syntax_.Flag(1, ENTRY(lists_, scaling_list_pred_mode_flag, sizeId, matrixId));
        if (sizeId > 1)
            syntax_.Se(dc_coef_minus8, &lists_.scaling_list_dc_coef_minus8[sizeId - 2][matrixId],
                       Unreadable("scaling_list_pred_matrix_id_delta", sizeId, matrixId));
    }

    // A delta and the coefficient it makes.
    void Coef(int sizeId, int matrixId, int i, int64_t delta, int64_t coef) {
        const std::string report = Unreadable("scaling_list_pred_matrix_id_delta", sizeId, matrixId);
        syntax_.Se(delta, kNotKept, report)
            .U(0, static_cast<uint64_t>(coef), &lists_.ScalingList[sizeId][matrixId][i], report);
    }

    // Legal deltas, of both signs, some of them the farthest there are.
    static int Delta(int matrixId, int i) {
        const int choice = (matrixId + i) % 16;
        return choice == 0 ? -128 : choice == 1 ? 127 : i % 5 - 2;
    }

    // The coefficients run modulo 256.
    void CodedList(int sizeId, int matrixId) {
        const int dc_coef_minus8 = 40 * matrixId - 7;
        CodedListHead(sizeId, matrixId, dc_coef_minus8);
        auto coef = static_cast<uint8_t>(sizeId > 1 ? dc_coef_minus8 + 8 : 8);
        for (int i = 0; i < CoefNum(sizeId); i++) {
            const int delta = Delta(matrixId, i);
            coef = static_cast<uint8_t>(coef + delta);
            Coef(sizeId, matrixId, i, delta, coef);
        }
    }

    void Sweep() {
        syntax_.SweepTruncations(&lists_, [](bitbuffer_t *bb, scaling_list_data_t *lists) {
            return _parse_scaling_list(bb, lists) == 0;
        });
    }

    int ParseBits() {
        std::vector<unsigned char> bytes = syntax_.bits().Bytes();
        bitbuffer_t bb{bytes.data(), 0, static_cast<unsigned int>(syntax_.bits().size())};
        return _parse_scaling_list(&bb, &lists_);
    }

    // Parses lists that are all predicted but one, which has the given deltas, then zeros.
    void ParseWithOneCoded(int sizeId, int matrixId, int dc_coef_minus8, const std::vector<int64_t> &deltas) {
        syntax_ = {};
        ForEachList([&](int s, int m) {
            if (s != sizeId || m != matrixId)
                return PredictedList(s, m);
            CodedListHead(s, m, dc_coef_minus8);
            for (size_t i = 0; i < static_cast<size_t>(CoefNum(s)); i++)
                syntax_.Se(i < deltas.size() ? deltas[i] : 0, kNotKept, "");
        });
        ASSERT_EQ(ParseBits(), 0);
    }

    Syntax syntax_;
    scaling_list_data_t lists_;
};

TEST_F(ScalingList, ReadsPredictedListsAndReportsEveryCut) {
    ForEachList([this](int sizeId, int matrixId) { PredictedList(sizeId, matrixId); });
    Sweep();
    EXPECT_EQ(lists_.scaling_list_delta_coef, PrefilledValue<INT64>());
    for (const auto &matrix : lists_.ScalingList[1])
        EXPECT_THAT(matrix, Each(PrefilledValue<INT64>()));
}

TEST_F(ScalingList, ReadsCodedListsAndReportsEveryCut) {
    for (const int parity : {0, 1}) {
        syntax_ = {};
        ForEachList([&](int sizeId, int matrixId) {
            if ((sizeId + matrixId) % 2 == parity)
                CodedList(sizeId, matrixId);
            else
                PredictedList(sizeId, matrixId);
        });
        Sweep();
    }
}

TEST_F(ScalingList, LeavesWhatIsNotCoded) {
    ForEachList([this](int sizeId, int matrixId) { CodedList(sizeId, matrixId); });
    ASSERT_EQ(ParseBits(), 0);
    syntax_.ExpectFields(syntax_.bits().size());
    for (const int matrixId : {1, 2, 4, 5}) {
        EXPECT_EQ(lists_.scaling_list_pred_mode_flag[3][matrixId], PrefilledValue<int>());
        EXPECT_EQ(lists_.scaling_list_dc_coef_minus8[1][matrixId], PrefilledValue<INT64>());
        EXPECT_THAT(lists_.ScalingList[3][matrixId], Each(PrefilledValue<INT64>()));
    }
    for (const auto &matrix : lists_.ScalingList[0])
        EXPECT_EQ(matrix[16], PrefilledValue<INT64>());
    for (const auto &size : lists_.scaling_list_pred_matrix_id_delta)
        EXPECT_THAT(size, Each(PrefilledValue<UINT64>()));
    // the last delta of the last list stays
    EXPECT_EQ(lists_.scaling_list_delta_coef, Delta(3, 63));
}

TEST_F(ScalingList, CoefficientsRunFrom8) {
    ParseWithOneCoded(0, 2, 0, {-8, 250, 6, -1});
    EXPECT_THAT(std::vector(lists_.ScalingList[0][2], lists_.ScalingList[0][2] + 5),
                ElementsAre(0, 250, 0, 255, 255));
    ParseWithOneCoded(1, 5, 0, {250});
    EXPECT_EQ(lists_.ScalingList[1][5][0], 2);
}

TEST_F(ScalingList, LargeListsRunFromTheirDcCoefficient) {
    for (const int sizeId : {2, 3}) {
        ParseWithOneCoded(sizeId, 3, 8, {0, 1});
        EXPECT_EQ(lists_.scaling_list_dc_coef_minus8[sizeId - 2][3], 8);
        EXPECT_EQ(lists_.ScalingList[sizeId][3][0], 16);
        EXPECT_EQ(lists_.ScalingList[sizeId][3][63], 17);
    }
}

TEST_F(ScalingList, TheRemainderOfANegativeSumIsNegative) {
    constexpr int kFarthest = 0x7FFFFFFF;
    ParseWithOneCoded(0, 0, 0, {-600, 80, -kFarthest});
    EXPECT_EQ(lists_.ScalingList[0][0][0], -80);
    EXPECT_EQ(lists_.ScalingList[0][0][1], 0);
    EXPECT_EQ(lists_.ScalingList[0][0][2], -255);
    ParseWithOneCoded(2, 0, -kFarthest, {-kFarthest, kFarthest});
    EXPECT_EQ(lists_.ScalingList[2][0][0], -246);  // -(2^32 - 2) + 8 + 256
    EXPECT_EQ(lists_.ScalingList[2][0][1], 9);
}

TEST_F(ScalingList, ADeltaOf32BitsIsUnreadable) {
    CodedListHead(0, 0);
    syntax_.Se(-0x80000000LL, kNotKept, "");
    const TraceCapture trace;
    EXPECT_EQ(ParseBits(), -1);
    EXPECT_THAT(trace.Errors(), ElementsAre("cannot parse scaling_list_pred_matrix_id_delta[0][0].\n"));
    EXPECT_EQ(lists_.scaling_list_delta_coef, PrefilledValue<INT64>());
}

TEST_F(ScalingList, TracesEntryAndExit) {
    ForEachList([this](int sizeId, int matrixId) { PredictedList(sizeId, matrixId); });
    const TraceCapture trace;
    ASSERT_EQ(ParseBits(), 0);
    ASSERT_EQ(trace.messages().size(), 2u);
    EXPECT_THAT(trace.Texts(7), ElementsAre("Called.\n", "Done.\n"));
    EXPECT_EQ(trace.messages()[1].function, "_parse_scaling_list");
    EXPECT_EQ(trace.messages()[1].file, "scaling_list.cpp");
}

TEST_F(ScalingList, NullArgumentsFailSilently) {
    bitbuffer_t bb{};
    const TraceCapture trace;
    EXPECT_EQ(_parse_scaling_list(nullptr, &lists_), -1);
    EXPECT_EQ(_parse_scaling_list(&bb, nullptr), -1);
    EXPECT_THAT(trace.messages(), IsEmpty());
}

}  // namespace
}  // namespace test
