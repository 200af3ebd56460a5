// What a display prints, written down line by line while the record is filled:
//
//     ExpectedDisplay expected("_display_vui", 6);
//     LINE(expected, vui, video_format, 5);        // vui.video_format = 5, and "video_format=5.\n"
//     ENTRY_LINE(expected, hrd, cpb_cnt_minus1, i, 2);
//     expected.Text("num_units_in_tick=1001.\n");

#ifndef TESTS_H265D_DISPLAY_EXPECTED_DISPLAY_H
#define TESTS_H265D_DISPLAY_EXPECTED_DISPLAY_H

#include <gmock/gmock.h>

#include <cstring>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "h265.h"
#include "support/trace_capture.h"

#define LINE(expected, record, element, value) (expected).Line(#element, (record).element = (value))
#define ENTRY_LINE(expected, record, element, i, value) \
    (expected).Line(#element "[" + std::to_string(i) + "]", (record).element[i] = (value))

namespace test {

struct DisplayedLine {
    int level;
    std::string function;
    std::string text;

    bool operator==(const DisplayedLine &) const = default;
};

inline void PrintTo(const DisplayedLine &line, std::ostream *out) {
    *out << line.level << " " << line.function << ": " << line.text;
}

class ExpectedDisplay {
 public:
    // The lines that follow come from this function, at this level.
    ExpectedDisplay(const std::string &function, int level) : function_(function), level_(level) {}

    template <typename Value>
    void Line(const std::string &element, Value value) {
        Text(element + "=" + std::to_string(value) + ".\n");
    }
    void Text(const std::string &text) { lines_.push_back({level_, function_, text}); }
    void Step(const std::string &text) { lines_.push_back({7, function_, text}); }
    void Append(const ExpectedDisplay &nested) {
        lines_.insert(lines_.end(), nested.lines_.begin(), nested.lines_.end());
    }

    // What a channel of this level lets through.
    std::vector<DisplayedLine> AtLevel(int level) const {
        std::vector<DisplayedLine> lines = lines_;
        std::erase_if(lines, [level](const DisplayedLine &line) { return line.level > level; });
        return lines;
    }

 private:
    std::string function_;
    int level_;
    std::vector<DisplayedLine> lines_;
};

// The lines of a nested display, which has tests of its own.
template <typename Display>
ExpectedDisplay Nested(Display display) {
    const TraceCapture trace(8);
    display();
    ExpectedDisplay lines("", 0);
    for (const TracedMessage &message : trace.messages()) {
        ExpectedDisplay line(message.function, message.level);
        line.Text(message.text);
        lines.Append(line);
    }
    return lines;
}

// While alive, the library has no channel.
class NoChannel {
 public:
    NoChannel() : channel_(std::exchange(g_hH265LibDbg, nullptr)) {}
    ~NoChannel() { g_hH265LibDbg = channel_; }
    NoChannel(const NoChannel &) = delete;
    NoChannel &operator=(const NoChannel &) = delete;

 private:
    HDBG channel_;
};

// A host that has heard enough after so many messages.
struct Hush {
    size_t messages;
    size_t heard = 0;

    static void Sink(const DbgTraceMessage *message, void *user) {
        if (std::strcmp(message->channel, "H265LIB") != 0)
            return;
        Hush *const hush = static_cast<Hush *>(user);
        if (++hush->heard == hush->messages)
            g_hH265LibDbg->nMaxLevel = 0;
    }
};

// The level counts afresh for every message: a display that is hushed says nothing more.
template <typename Display>
void ExpectCanBeHushed(Display display, size_t messages) {
    for (size_t i = 1; i <= messages; i++) {
        Hush hush = {i};
        const TraceCapture trace;
        DbgTraceSetSink(Hush::Sink, &hush);
        display();
        ASSERT_EQ(hush.heard, i);
    }
}

// The display at each level of the channel, without a channel, and hushed at every message: the right lines,
// and the record as it was.
template <typename Record, typename Display>
void ExpectDisplay(const Record &record, Display display, const ExpectedDisplay &expected) {
    std::vector<unsigned char> before(sizeof record);
    std::memcpy(before.data(), &record, sizeof record);
    for (int level = 4; level <= 8; level++) {
        const TraceCapture trace(level);
        display(&record);
        std::vector<DisplayedLine> lines;
        for (const TracedMessage &message : trace.messages()) {
            if (message.channel == "H265LIB")
                lines.push_back({message.level, message.function, message.text});
        }
        EXPECT_EQ(lines, expected.AtLevel(level)) << "at level " << level;
    }
    const TraceCapture trace;
    {
        const NoChannel no_channel;
        display(&record);
    }
    EXPECT_THAT(trace.messages(), testing::IsEmpty());
    EXPECT_EQ(std::memcmp(before.data(), &record, sizeof record), 0);
    ExpectCanBeHushed([&] { display(&record); }, expected.AtLevel(8).size());
}

// The texts that a display prints at a level of the channel.
template <typename Display>
std::vector<std::string> DisplayedTexts(int level, Display display) {
    const TraceCapture trace(level);
    display();
    std::vector<std::string> texts;
    for (const TracedMessage &message : trace.messages()) {
        if (message.channel == "H265LIB")
            texts.push_back(message.text);
    }
    return texts;
}

// Messages that a display issues at level 8 for a record of nothing but such bytes, alone in its heap block.
template <typename Record, typename Display>
size_t MessagesOfFilledRecord(int byte, Display display) {
    const auto record = std::make_unique<Record>();
    std::memset(record.get(), byte, sizeof *record);
    const TraceCapture trace;
    size_t count = 0;
    DbgTraceSetSink([](const DbgTraceMessage *, void *user) { ++*static_cast<size_t *>(user); }, &count);
    display(record.get());
    return count;
}

// The display of no record: one assertion, and nothing else.
template <typename Display>
void ExpectNullIsReported(const std::string &assertion, Display display) {
    const TraceCapture trace;
    display();
    EXPECT_THAT(trace.Assertions(), testing::ElementsAre(AssertionOf(assertion)));
    EXPECT_EQ(trace.messages().size(), 1u);
}

}  // namespace test

#endif
