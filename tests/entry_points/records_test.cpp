// Records are the caller's and may hold anything: whatever is in them beforehand, a call gives the same, and
// nothing that neither the caller nor the library has set is looked at. (The latter is for Valgrind to see,
// in the records that come from malloc.)

#include <gmock/gmock.h>

#include <filesystem>

#include "entry_points/call.h"
#include "entry_points/parsed_records.h"
#include "support/interposed.h"
#include "support/samples.h"
#include "support/sps_rewriting.h"
#include "support/trace_capture.h"

namespace test {
namespace {

// With the last one every flag is 1.
constexpr uint32_t kFills[] = {0x00000000, 0xFFFFFFFF, 0xA5A5A5A5, 0x00000001};

// What a call does that others can see.
struct Outcome {
    int64_t result;
    Bytes outputs;
    std::string texts;
};

// The messages, with all hexadecimal numbers taken out, since addresses differ.
std::string Texts(const TraceCapture &trace) {
    std::string texts;
    for (const TracedMessage &message : trace.messages())
        texts += message.function + ": " + message.text;
    for (size_t at = 0; (at = texts.find("0x", at)) != std::string::npos;)
        texts.erase(at, texts.find_first_not_of("0123456789abcdefx", at + 2) - at);
    return texts;
}

template <typename Prepare>
Outcome Made(Prepare prepare, Fill fill) {
    const Call call = prepare(fill);
    const TraceCapture trace;
    Outcome outcome{call.run(), call.outputs(), Texts(trace)};
    call.release();
    return outcome;
}

// `prepare` makes the call, with records of the given fill. Each byte of the outputs has to be either
// written, and then with the same value, or left as it was.
template <typename Prepare>
void ExpectTheSameWhateverTheFill(Prepare prepare) {
    const ControlledClock clock(FreshTime());
    Made(prepare, kFills[0]);  // messages that are limited in rate are issued here
    std::vector<Outcome> outcomes;
    for (const uint32_t fill : kFills)
        outcomes.push_back(Made(prepare, fill));
    const Outcome uninitialised = Made(prepare, {});

    const Outcome &first = outcomes.front();
    for (const Outcome &outcome : outcomes) {
        ASSERT_EQ(outcome.result, first.result);
        ASSERT_EQ(outcome.texts, first.texts);
        ASSERT_EQ(outcome.outputs.size(), first.outputs.size());
    }
    ASSERT_EQ(uninitialised.result, first.result);
    ASSERT_EQ(uninitialised.texts, first.texts);

    for (size_t i = 0; i < first.outputs.size(); i++) {
        bool untouched = true, equal = uninitialised.outputs[i] == first.outputs[i];
        for (size_t run = 0; run < outcomes.size(); run++) {
            untouched &= outcomes[run].outputs[i] == ByteOf(kFills[run], i);
            equal &= outcomes[run].outputs[i] == first.outputs[i];
        }
        ASSERT_TRUE(untouched || equal) << "byte " << i;
    }
}

// ---- every entry point -----------------------------------------------------------------------------------

class Records : public testing::TestWithParam<EntryPoint> {};

TEST_P(Records, MayHoldAnything) {
    ExpectTheSameWhateverTheFill(GetParam().prepare);
}

INSTANTIATE_TEST_SUITE_P(Of, Records, testing::ValuesIn(EntryPoints()),
                         [](const auto &entry_point) { return NameOf(entry_point.param); });

// ---- parameter sets of all kinds -------------------------------------------------------------------------

BOOL ParseAndDisplay(const Bytes &nal, vps_h265_t *vps) {
    const BOOL parsed = H265Lib_Parse_vps_nal(nal.data(), nal.size(), vps);
    if (parsed)
        H265Lib_Display_vps(vps);
    return parsed;
}

BOOL ParseAndDisplay(const Bytes &nal, sps_h265_t *sps) {
    const BOOL parsed = H265Lib_Parse_sps_nal(nal.data(), nal.size(), sps);
    if (parsed)
        H265Lib_Display_sps(sps);
    return parsed;
}

BOOL ParseAndDisplay(const Bytes &nal, pps_h265_t *pps) {
    const BOOL parsed = H265Lib_Parse_pps_nal(nal.data(), static_cast<int>(nal.size()), pps);
    if (parsed)
        H265Lib_Display_pps(pps);
    return parsed;
}

template <typename Record>
void ExpectTheSameRecord(const Bytes &nal) {
    ExpectTheSameWhateverTheFill([&nal](Fill fill) {
        const auto record = Filled<Record>(fill);
        Prepare(record.get());
        return Call{[&nal, record] { return ParseAndDisplay(nal, record.get()); }, MemoryOf(record)};
    });
}

TEST(RecordsOfParameterSets, OfSamplesMayHoldAnything) {
    for (const auto &entry : std::filesystem::directory_iterator(SAMPLES_DIR)) {
        if (entry.path().extension() != ".hevc")
            continue;
        const std::string file = entry.path().filename();
        SCOPED_TRACE(file);
        ExpectTheSameRecord<vps_h265_t>(SampleNalUnits(file, 32).back());
        ExpectTheSameRecord<sps_h265_t>(SampleNalUnits(file, 33).back());
        ExpectTheSameRecord<pps_h265_t>(SampleNalUnits(file, 34).back());
        if (HasFatalFailure())
            return;
    }
}

template <typename Record>
void ExpectTheSameRecordOfCut(const Bytes &nal) {
    for (size_t length = 0; length < nal.size() && !testing::Test::HasFatalFailure(); length += 3) {
        SCOPED_TRACE("cut to " + std::to_string(length) + " bytes");
        ExpectTheSameRecord<Record>(Bytes(nal.begin(), nal.begin() + static_cast<std::ptrdiff_t>(length)));
    }
}

TEST(RecordsOfParameterSets, MayHoldAnythingWhereTheParseFails) {
    ExpectTheSameRecordOfCut<vps_h265_t>(VpsNal());
    ExpectTheSameRecordOfCut<sps_h265_t>(SpsNal());
    ExpectTheSameRecordOfCut<pps_h265_t>(PpsNal());
}

TEST(RecordsOfParameterSets, MayHoldAnythingForRewritings) {
    Random random(7);
    for (int i = 0; i < 30 && !HasFatalFailure(); i++) {
        SCOPED_TRACE(i);
        const Bytes nal = RandomSps(&random);
        for (const SpsRewriter &rewriter : {kSpsModification, kSpsVuiReplacement})
            ExpectTheSameWhateverTheFill([&](Fill fill) {
                const auto sps = Filled<sps_h265_t>(fill);
                Prepare(sps.get());
                const auto rewritten = std::make_shared<Bytes>();
                return Call{[&, sps, rewritten] {
                                const BOOL parsed = ParseAndDisplay(nal, sps.get());
                                *rewritten = rewriter.Rewritten(nal, *sps);
                                return parsed;
                            },
                            [rewritten] { return *rewritten; }};
            });
    }
}

}  // namespace
}  // namespace test
