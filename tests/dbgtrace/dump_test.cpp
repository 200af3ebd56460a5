#include <gmock/gmock.h>

#include <numeric>
#include <string>
#include <vector>

#include "support/nal_unit.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The texts of a dump at level 6.
std::vector<std::string> Dump(const Bytes &bytes, const char *title = "TITLE") {
    const TraceCapture trace(6);
    _DoDbgPrintBuffer(g_hH265LibDbg, 6, bytes.data(), bytes.size(), title, "Caller", "caller.cpp", 17);
    return trace.Texts(6);
}

Bytes Ascending(size_t length, unsigned char first = 0) {
    Bytes bytes(length);
    std::iota(bytes.begin(), bytes.end(), first);
    return bytes;
}

TEST(Dump, HasSixteenBytesARow) {
    EXPECT_THAT(Dump(Ascending(35, 0x30), "ORIGINAL VPS NAL"),
                ElementsAre("ORIGINAL VPS NAL (35 bytes):\n",
                            "00000000  30 31 32 33 34 35 36 37 38 39 3A 3B 3C 3D 3E 3F  |0123456789:;<=>?|\n",
                            "00000010  40 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F  |@ABCDEFGHIJKLMNO|\n",
                            "00000020  50 51 52                                         |PQR|\n"));
}

TEST(Dump, OfAFullRowHasNoOther) {
    EXPECT_EQ(Dump(Ascending(15)).size(), 2u);
    EXPECT_EQ(Dump(Ascending(16)).size(), 2u);
    EXPECT_EQ(Dump(Ascending(17)).size(), 3u);
}

TEST(Dump, ShowsPrintableAsciiOnly) {
    EXPECT_THAT(Dump({0x00, 0x1F, 0x20, 0x21, 0x7E, 0x7F, 0x80, 0xFF, '%', 'd'}),
                ElementsAre("TITLE (10 bytes):\n",
                            "00000000  00 1F 20 21 7E 7F 80 FF 25 64                    |.. !~...%d|\n"));
}

TEST(Dump, OffsetsAreHexadecimal) {
    const std::vector<std::string> texts = Dump(Bytes(0x1234B, 0xAB));
    ASSERT_EQ(texts.size(), 2u + 0x1234);
    EXPECT_EQ(texts[0], "TITLE (74571 bytes):\n");
    EXPECT_EQ(texts[0xAC], "00000ab0  AB AB AB AB AB AB AB AB AB AB AB AB AB AB AB AB  |................|\n");
    EXPECT_EQ(texts.back(), "00012340  AB AB AB AB AB AB AB AB AB AB AB                 |...........|\n");
}

TEST(Dump, OfNothingIsATitle) {
    EXPECT_THAT(Dump({}, "100%d"), ElementsAre("100%d (0 bytes):\n"));
}

TEST(Dump, OfNullIsThatOfNothing) {
    const TraceCapture trace(6);
    _DoDbgPrintBuffer(g_hH265LibDbg, 6, nullptr, 100, "TITLE", "Caller", "caller.cpp", 17);
    EXPECT_THAT(trace.Texts(6), ElementsAre("TITLE (0 bytes):\n"));
}

TEST(Dump, CarriesItsCallerInEveryRow) {
    const Bytes bytes = Ascending(20);
    const TraceCapture trace(8);
    _DoDbgPrintBuffer(g_hH265LibDbg, 7, bytes.data(), 20, "TITLE", "Caller", "caller.cpp", 17);
    EXPECT_EQ(trace.messages().size(), 3u);
    for (const TracedMessage &message : trace.messages()) {
        EXPECT_EQ(message.channel, "H265LIB");
        EXPECT_EQ(message.level, 7);
        EXPECT_EQ(message.function, "Caller");
        EXPECT_EQ(message.file, "caller.cpp");
        EXPECT_EQ(message.line, 17);
    }
}

TEST(Dump, FollowsTheLevelOfTheChannel) {
    const Bytes bytes = Ascending(20);
    const TraceCapture trace(5);
    _DoDbgPrintBuffer(g_hH265LibDbg, 6, bytes.data(), 20, "TITLE", "Caller", "caller.cpp", 17);
    EXPECT_THAT(trace.messages(), IsEmpty());
    _DoDbgPrintBuffer(g_hH265LibDbg, 5, bytes.data(), 20, "TITLE", "Caller", "caller.cpp", 17);
    EXPECT_EQ(trace.messages().size(), 3u);
}

TEST(Dump, WithoutChannelIsNone) {
    const Bytes bytes = Ascending(20);
    const TraceCapture trace(8);
    _DoDbgPrintBuffer(nullptr, 3, bytes.data(), 20, "TITLE", "Caller", "caller.cpp", 17);
    EXPECT_THAT(trace.messages(), IsEmpty());
}

}  // namespace
}  // namespace test
