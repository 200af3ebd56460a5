// Many threads at once, each with its own records. Whether they share anything else is for ThreadSanitizer to
// see.

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <barrier>
#include <thread>

#include "entry_points/call.h"
#include "h265.h"
#include "support/interposed.h"

namespace test {
namespace {

constexpr size_t kThreads = 8;

thread_local std::vector<std::string> texts_of_this_thread;

// While alive, each thread keeps its own messages. There is no lock, which would keep the threads apart.
class TraceByThread {
 public:
    explicit TraceByThread(int level) : level_before_(g_hH265LibDbg->nMaxLevel) {
        g_hH265LibDbg->nMaxLevel = level;
        DbgTraceSetSink(
            [](const DbgTraceMessage *message, void *) { texts_of_this_thread.push_back(message->text); },
            nullptr);
    }
    ~TraceByThread() {
        DbgTraceSetSink(nullptr, nullptr);
        g_hH265LibDbg->nMaxLevel = level_before_;
        texts_of_this_thread.clear();
    }
    TraceByThread(const TraceByThread &) = delete;
    TraceByThread &operator=(const TraceByThread &) = delete;

 private:
    int level_before_;
};

// Runs work(i) on thread i, all from the same moment on.
template <typename Work>
void OnAllThreads(Work work) {
    std::barrier start(static_cast<std::ptrdiff_t>(kThreads));
    std::vector<std::thread> threads;
    for (size_t i = 0; i < kThreads; i++)
        threads.emplace_back([&, i] {
            start.arrive_and_wait();
            work(i);
        });
    for (std::thread &thread : threads)
        thread.join();
}

// ---- every entry point -----------------------------------------------------------------------------------

struct Outcome {
    int64_t result;
    Bytes outputs;
    size_t messages;
    bool operator==(const Outcome &) const = default;
};

Outcome Made(const EntryPoint &entry_point) {
    const Call call = entry_point.prepare(0);
    texts_of_this_thread.clear();
    Outcome outcome{call.run(), call.outputs(), texts_of_this_thread.size()};
    call.release();
    return outcome;
}

TEST(Threads, WithTheirOwnRecordsGetWhatOneThreadGets) {
    constexpr size_t kRounds = 5;
    std::vector<EntryPoint> entry_points = EntryPoints();
    std::erase_if(entry_points,
                  [](const EntryPoint &entry_point) { return entry_point.one_thread_at_a_time; });

    const ControlledClock clock(FreshTime());
    const TraceByThread trace(8);
    std::vector<Outcome> expected;
    for (const EntryPoint &entry_point : entry_points) {
        Made(entry_point);  // messages that are limited in rate are issued here
        expected.push_back(Made(entry_point));
    }

    std::array<std::vector<std::string>, kThreads> different;
    OnAllThreads([&](size_t thread) {
        for (size_t i = 0; i < kRounds * entry_points.size(); i++) {
            const size_t which = (i + thread * 5) % entry_points.size();
            if (Made(entry_points[which]) != expected[which])
                different[thread].push_back(NameOf(entry_points[which]));
        }
    });
    EXPECT_THAT(different, testing::Each(testing::IsEmpty()));
}

// ---- messages that are limited in rate -------------------------------------------------------------------

struct LimitedMessage {
    const char *start;  // of its text
    void (*provoke)();
};

void ScanSei(const Bytes &nal) {
    int payload_offset = 0, nal_type_offset = 0, suid = 0;
    SEI_message_t header;
    BOOL more;
    H265Lib_DetermineSEIType(nal.data(), static_cast<int>(nal.size()), &payload_offset, &nal_type_offset,
                             &header, &suid, &more);
}

void BuildCaptions(UINT suid, int cc_count) {
    unsigned char buffer[256];
    vanc_t entry{};
    entry.suid = suid;
    H265Lib_format_sei_cc_nal(buffer, sizeof buffer, &entry, sizeof entry, cc_count, nullptr);
}

const LimitedMessage kLimitedMessages[] = {
    {"Deencapsulation cannot be done",
     [] {
         const unsigned char nal[8] = {0x40, 1};
         unsigned char sodb[4];
         H265Lib_SODB_deencapsulation_from_NAL(nal, sizeof nal, sodb, sizeof sodb);
     }},
    {"SEI Payload type:203 is greater",
     [] {
         ScanSei({0, 0, 1, 0x4E, 1, 203, 1, 0x55, 0x80});
     }},
    {"cc_count:40 is greater", [] { BuildCaptions(SUID_CLOSED_CAPTION, 40); }},
    {"vanc_data:", [] { BuildCaptions(SUID_CLOSED_CAPTION, 20); }},
    {"Entry:0, SUID:3 is NOT Caption", [] { BuildCaptions(SUID_AFD, 20); }},
    {"enTimeSource:",
     [] {
         unsigned char buffer[64];
         const vitc_t vitc{};
         const auto sps = std::make_unique<sps_h265_t>();
         SEI_time_code_info_t info{};
         info.pParsedSps = sps.get();
         H265Lib_format_sei_time_code_nal(buffer, sizeof buffer, &vitc, &info);
     }},
};

using Counts = std::array<size_t, std::size(kLimitedMessages)>;

// How often each is issued when this thread provokes all of them.
Counts Provoke() {
    texts_of_this_thread.clear();
    for (const LimitedMessage &message : kLimitedMessages)
        message.provoke();
    Counts counts{};
    for (size_t i = 0; i < counts.size(); i++)
        counts[i] = static_cast<size_t>(std::count_if(
            texts_of_this_thread.begin(), texts_of_this_thread.end(),
            [i](const std::string &text) { return text.starts_with(kLimitedMessages[i].start); }));
    return counts;
}

TEST(Threads, IssueALimitedMessageOnceEachAtMostAndOnceInAllAtLeast) {
    constexpr int kRounds = 20;
    ControlledClock clock(FreshTime());
    const TraceByThread trace(6);
    for (int round = 0; round < kRounds; round++) {
        clock.Set(FreshTime());
        std::array<Counts, kThreads> counts;
        OnAllThreads([&](size_t thread) { counts[thread] = Provoke(); });
        for (size_t i = 0; i < std::size(kLimitedMessages); i++) {
            SCOPED_TRACE(kLimitedMessages[i].start);
            size_t issued = 0;
            for (const Counts &of_thread : counts) {
                EXPECT_LE(of_thread[i], 1u);
                issued += of_thread[i];
            }
            EXPECT_GE(issued, 1u);
        }
        EXPECT_EQ(Provoke(), Counts{});  // not again within the time
    }
}

}  // namespace
}  // namespace test
