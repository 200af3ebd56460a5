#include "h265d/framing/parse_frame.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <ostream>
#include <random>
#include <utility>

#include "support/interposed.h"
#include "support/nal_unit.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr char kNoSodb[] = "Failed to get SODB from RBSP. Output buffer is too small.\n";

std::string TooLong(size_t length, size_t capacity) {
    return "Deencapsulation cannot be done as InputBufferLength:" + std::to_string(length) +
           " is longer than OutputBufferLength:" + std::to_string(capacity) + ".\n";
}

std::string WithPointer(const std::string &format, const void *pointer) {
    char formatted[200];
    std::snprintf(formatted, sizeof formatted, format.c_str(), pointer);
    return formatted;
}

// A copy in a block of exactly its size, so that a read beyond it does not go unnoticed.
class Block {
 public:
    explicit Block(const Bytes &bytes)
        : size_(bytes.size()), bytes_(std::make_unique<unsigned char[]>(bytes.size())) {
        std::copy(bytes.begin(), bytes.end(), bytes_.get());
    }
    unsigned char *data() const { return bytes_.get(); }
    size_t size() const { return size_; }

 private:
    size_t size_;
    std::unique_ptr<unsigned char[]> bytes_;
};

// A NAL unit of `length` bytes from its header on, without anything to remove.
Bytes NalUnitOfLength(size_t length, int start_code_length) {
    return NalUnit(1, Bytes(length - 2, 0xFF), start_code_length);
}

// What differs between the entry points in the frame that they share.
struct Framed {
    const char *name;
    const char *too_small;  // up to the length
    const char *no_start_code;
    size_t capacity;  // of its scratch; 0: any length fits
    BOOL (*parse)(unsigned char *nal, size_t length);
};

void PrintTo(const Framed &entry, std::ostream *out) {
    *out << entry.name;
}

template <typename Record>
Record *Zeroed() {
    static Record record;
    return &(record = {});
}

BOOL ParseSliceHeader(unsigned char *nal, size_t length) {
    return H265Lib_Parse_slice_header_nal(nal, static_cast<int>(length), Zeroed<sps_h265_t>(),
                                          Zeroed<pps_h265_t>(), Zeroed<ssh_h265_t>());
}

constexpr Framed kEntryPoints[] = {
    {"H265Lib_Parse_au_delimiter_nal", "buffer_len:", "Failed to parse au delimiter nal! buffer:%p.\n", 16,
     [](unsigned char *nal, size_t length) {
         return H265Lib_Parse_au_delimiter_nal(nal, static_cast<int>(length), Zeroed<aud_h265_t>());
     }},
    {"H265Lib_Parse_vps_nal", "BufferLen:", "Failed to parse sps nal! buffer:%p.\n", 1512,
     [](unsigned char *nal, size_t length) {
         return H265Lib_Parse_vps_nal(nal, length, Zeroed<vps_h265_t>());
     }},
    {"H265Lib_Parse_sps_nal", "buffer_len:", "Failed to parse sps nal! buffer:%p.\n", 1512,
     [](unsigned char *nal, size_t length) {
         return H265Lib_Parse_sps_nal(nal, length, Zeroed<sps_h265_t>());
     }},
    {"H265Lib_Parse_pps_nal", "buffer_len:", "Failed to parse pps nal! buffer:%p.\n", 256,
     [](unsigned char *nal, size_t length) {
         return H265Lib_Parse_pps_nal(nal, static_cast<int>(length), Zeroed<pps_h265_t>());
     }},
    {"H265Lib_Parse_slice_header_nal", "buffer_len:", "Failed to parse slice header nal! buffer:%p.\n", 0,
     ParseSliceHeader},
};

constexpr auto kName = [](const testing::TestParamInfo<Framed> &tested) {
    return std::string(tested.param.name);
};

class ParseFrame : public testing::TestWithParam<Framed> {
 protected:
    BOOL Parse(const Bytes &nal) { return Parse(Block(nal)); }
    BOOL Parse(const Block &nal) {
        trace_.Clear();
        return GetParam().parse(nal.data(), nal.size());
    }

    void ExpectErrorsInItsName(const std::vector<std::string> &texts) const {
        EXPECT_EQ(trace_.Errors(), texts);
        for (const TracedMessage &message : trace_.messages())
            EXPECT_TRUE(message.level != 3 || message.channel == "ASSERT" ||
                        message.function == GetParam().name)
                << message.function;
    }

    TraceCapture trace_;
    ControlledClock clock_{FreshTime()};
};

INSTANTIATE_TEST_SUITE_P(EntryPoints, ParseFrame, testing::ValuesIn(kEntryPoints), kName);

TEST_P(ParseFrame, FourBytesAreTooFewWhateverTheyAre) {
    const Bytes four = {0, 0, 1, 0x40};
    for (size_t length = 0; length <= 4; length++) {
        EXPECT_EQ(Parse(Bytes(four.begin(), four.begin() + static_cast<ptrdiff_t>(length))), FALSE);
        ExpectErrorsInItsName(
            {GetParam().too_small + std::to_string(length) + " is too small. Malformed NAL.\n"});
        EXPECT_THAT(trace_.Texts(8), IsEmpty());
    }
}

TEST_P(ParseFrame, NoStartCode) {
    for (const Bytes &nal : {Bytes{0x40, 1, 0x0C, 1, 0xFF}, Bytes{0, 0, 0, 0, 1, 0x40, 1, 0x0C}}) {
        const Block block(nal);
        EXPECT_EQ(Parse(block), FALSE);
        ExpectErrorsInItsName({WithPointer(GetParam().no_start_code, block.data())});
        EXPECT_EQ(trace_.messages().size(), 1u);
    }
}

TEST_P(ParseFrame, NothingBehindTheHeader) {
    for (const Bytes &nal : {Bytes{0, 0, 1, 0x40, 1}, Bytes{0, 0, 0, 1, 0x40, 1}, Bytes{0, 0, 0, 1, 0x40}}) {
        EXPECT_EQ(Parse(nal), FALSE);
        ExpectErrorsInItsName({kNoSodb});
    }
}

TEST_P(ParseFrame, TracesTheStartCode) {
    Parse(NalUnitOfLength(8, 3));
    EXPECT_THAT(trace_.Texts(8), Contains("Found Annex-B 3 bytes start code prefix.\n").Times(1));
    Parse(NalUnitOfLength(8, 4));
    EXPECT_THAT(trace_.Texts(8), Contains("Found Annex-B 4 bytes start code prefix.\n").Times(1));
}

TEST_P(ParseFrame, TheScratchHoldsTheNalUnitFromItsHeaderOn) {
    const size_t capacity = GetParam().capacity != 0 ? GetParam().capacity : 100'000;
    for (const int start_code_length : {3, 4}) {
        Parse(NalUnitOfLength(capacity, start_code_length));
        EXPECT_THAT(trace_.Errors(), Not(Contains(kNoSodb)));
    }
}

TEST_P(ParseFrame, OnlyAScratchForAnyLengthComesFromTheHeap) {
    const FailingAllocations heap(1000);
    Parse(NalUnitOfLength(10, 4));
    EXPECT_EQ(FailingAllocations::Calls(), GetParam().capacity == 0 ? 1 : 0);
}

TEST_P(ParseFrame, WorksInSilenceWithoutAChannel) {
    const HDBG channel = std::exchange(g_hH265LibDbg, nullptr);
    for (const Bytes &nal :
         {Bytes(3, 0), Bytes(2000, 0), Bytes{0, 0, 1, 0x40, 1}, Bytes{0, 0, 0, 1, 0x40, 1}}) {
        EXPECT_EQ(Parse(nal), FALSE);
        EXPECT_THAT(trace_.messages(), IsEmpty());
    }
    g_hH265LibDbg = channel;
}

class BoundedParseFrame : public ParseFrame {};

// Without the last one, which any length fits.
INSTANTIATE_TEST_SUITE_P(EntryPoints, BoundedParseFrame,
                         testing::ValuesIn(std::begin(kEntryPoints), std::end(kEntryPoints) - 1), kName);

TEST_P(BoundedParseFrame, OneByteMoreThanTheScratchHoldsFails) {
    const size_t capacity = GetParam().capacity;
    for (const int start_code_length : {3, 4}) {
        clock_.Set(FreshTime());
        EXPECT_EQ(Parse(NalUnitOfLength(capacity + 1, start_code_length)), FALSE);
        EXPECT_THAT(trace_.Errors(), ElementsAre(TooLong(capacity + 1, capacity), kNoSodb));
    }
}

TEST_P(BoundedParseFrame, EmulationPreventionBytesCountAsWell) {
    const size_t capacity = GetParam().capacity;
    Bytes rbsp(capacity - 2, 0xFF);  // would fit without the byte that is inserted
    rbsp[5] = rbsp[6] = rbsp[7] = 0;
    EXPECT_EQ(Parse(NalUnit(1, rbsp)), FALSE);
    EXPECT_THAT(trace_.Errors(), ElementsAre(TooLong(capacity + 1, capacity), kNoSodb));
}

class HeapScratch : public testing::Test {
 protected:
    static BOOL Parse(const Bytes &nal) {
        const Block block(nal);
        return ParseSliceHeader(block.data(), block.size());
    }

    TraceCapture trace_;
};

TEST_F(HeapScratch, AFailedAllocationIsReportedWithItsSize) {
    const FailingAllocations heap(1);
    EXPECT_EQ(Parse({0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), FALSE);  // before the start code is looked for
    EXPECT_THAT(trace_.Errors(),
                ElementsAre("Failed to allocate memory for nal_sodb_buffer. Size requested:37.\n"));
    EXPECT_EQ(trace_.messages().size(), 1u);
    EXPECT_EQ(FailingAllocations::Calls(), 1);
}

TEST_F(HeapScratch, TooShortANalUnitAllocatesNothing) {
    const FailingAllocations heap(1);
    EXPECT_EQ(Parse({0, 0, 1, 0x26}), FALSE);
    EXPECT_EQ(FailingAllocations::Calls(), 0);
}

TEST_F(HeapScratch, TracesBothLengths) {
    const Bytes nal = NalUnit(1, {0xFF, 0, 0, 1, 0xFF});
    ASSERT_EQ(nal.size(), 4u + 2 + 6);
    EXPECT_EQ(Parse(nal), TRUE);
    EXPECT_THAT(trace_.Texts(7),
                ElementsAre("SODB deencapsulation was successful NAL unit length:12, SODB length:5.\n"));
    EXPECT_THAT(trace_.Errors(), IsEmpty());
    EXPECT_EQ(trace_.messages().back().function, "H265Lib_Parse_slice_header_nal");
}

class OpenedSodb : public testing::Test {
 protected:
    static constexpr ParseFrameTexts kTexts = {
        {"Entry", "entry.cpp", 7}, "length %d\n", "no start code %p\n", "no SODB\n"};
    static constexpr unsigned char kUntouched = 0xA5;

    ParseInput Input() const { return {nal_.data(), static_cast<int64_t>(nal_.size())}; }

    void ExpectOpened(const unsigned char *header, const unsigned char *scratch) const {
        EXPECT_EQ(header, nal_.data() + 4);
        EXPECT_EQ(bb_.bit_buffer, scratch);
        EXPECT_EQ(bb_.bit_offset, 0u);
        EXPECT_EQ(bb_.num_bits, 5u * 8);
        EXPECT_THAT(Bytes(scratch, scratch + 5), ElementsAre(0x11, 0, 0, 1, 0x80));
    }

    const Bytes nal_ = NalUnit(1, {0x11, 0, 0, 1, 0x80});
    bitbuffer_t bb_{nullptr, 77, 78};
    const TraceCapture trace_{7};
};

TEST_F(OpenedSodb, GivesTheHeaderAndACursorOverTheScratch) {
    unsigned char scratch[8];
    std::fill_n(scratch, 8, kUntouched);
    const unsigned char *header = OpenSodb(Input(), kTexts, scratch, 8, &bb_);
    ExpectOpened(header, scratch);
    EXPECT_THAT(Bytes(scratch + 5, scratch + 8), Each(kUntouched));
    EXPECT_THAT(trace_.messages(), IsEmpty());
}

TEST_F(OpenedSodb, GivesAHeapScratchThatTheCallerReleases) {
    unsigned char *scratch = nullptr;
    const unsigned char *header = OpenSodbOnHeap(Input(), kTexts, "size %d\n", &scratch, &bb_);
    ASSERT_NE(header, nullptr);
    ExpectOpened(header, scratch);
    std::free(scratch);
    EXPECT_THAT(trace_.Errors(), IsEmpty());
}

// What a reader that stops early gets is the front of what there is, as far as it can read.
TEST(PrefixOfNal, HoldsAsManyBytesAsAreRead) {
    const TraceCapture trace{6};
    static constexpr ParseFrameTexts kTexts = {TRACE_SITE, "%d", "%p", "no SODB"};
    constexpr int64_t kRead = 20;
    for (unsigned int seed = 0; seed < 2000; seed++) {
        Bytes nal = {0, 0, 1, 0x02, 0x01};
        std::mt19937 random(seed);
        while (nal.size() < 80)
            nal.push_back(std::array<unsigned char, 6>{0, 0, 0, 3, 3, 0x55}[random() % 6]);
        unsigned char whole[80];
        bitbuffer_t whole_bb;
        unsigned char *scratch = nullptr;
        bitbuffer_t prefix_bb;
        const ParseInput input = {nal.data(), static_cast<int64_t>(nal.size())};
        ASSERT_NE(OpenSodb(input, kTexts, whole, sizeof whole, &whole_bb), nullptr);
        ASSERT_NE(OpenSodbOnHeap(input, kTexts, "", &scratch, &prefix_bb, PrefixOfNal(kRead)), nullptr);
        EXPECT_LT(prefix_bb.num_bits, whole_bb.num_bits);
        EXPECT_EQ(Bytes(scratch, scratch + kRead), Bytes(whole, whole + kRead)) << seed;
        EXPECT_GE(prefix_bb.num_bits, kRead * 8) << seed;
        std::free(scratch);
    }
}

TEST_F(OpenedSodb, ReportsACursorThatCannotBeOpened) {
    unsigned char scratch[8];
    EXPECT_EQ(OpenSodb(Input(), kTexts, scratch, 8, nullptr), nullptr);
    unsigned char *heap_scratch = nullptr;
    EXPECT_EQ(OpenSodbOnHeap(Input(), kTexts, "size %d\n", &heap_scratch, nullptr), nullptr);
    EXPECT_THAT(trace_.Errors(), ElementsAre("Failed to init Bitbuffer.\n", "Failed to init Bitbuffer.\n"));
    for (const TracedMessage &message : trace_.messages())
        EXPECT_EQ(message.function + message.file + std::to_string(message.line), "Entryentry.cpp7");
}

}  // namespace
}  // namespace test
