// The reader as its users show it: an active format description is found wherever the walk can get to it.

#include <gmock/gmock.h>

#include <climits>

#include "h264.h"
#include "h265.h"
#include "support/nal_unit.h"
#include "support/samples.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::Field;

constexpr int kPrefix = 39;
constexpr char kNone[] = "No active format description in the SEI NAL unit.\n";

const Bytes kFormat = {0xB5, 0, 0x31, 'D', 'T', 'G', '1', 0x41, 0xF8};

// A message as clause 7.3.5 codes it, ff_bytes included.
Bytes Message(size_t type, const Bytes &payload) {
    Bytes message;
    for (const size_t number : {type, payload.size()}) {
        message.insert(message.end(), number / 255, 0xFF);
        message.push_back(static_cast<unsigned char>(number % 255));
    }
    message.insert(message.end(), payload.begin(), payload.end());
    return message;
}

Bytes Joined(Bytes first, const Bytes &second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// A NAL unit with this header, given as its bytes, and an active format description.
Bytes WithHeader(const Bytes &start_code_and_header) {
    return Joined(start_code_and_header, Joined(Message(4, kFormat), {0x80}));
}

// Parses an exactly sized copy; gives the index of the payload, or -1 with the one report in `error`.
int Find(const Bytes &nal, std::string *error = nullptr) {
    Bytes exact(nal);
    SEI_afd_t afd{};
    const TraceCapture trace;
    if (parse_sei_afd_nal(exact.data(), static_cast<int>(exact.size()), &afd)) {
        EXPECT_EQ(afd.afd_data.active_format, 8);
        EXPECT_EQ(afd.header.payload_type, 4);
        return static_cast<int>(afd.header.payload_index);
    }
    EXPECT_EQ(trace.messages().size(), 1u);
    if (error != nullptr)
        *error = trace.messages().at(0).text;
    return -1;
}

// The same behind these messages, which do not let it be found when they are malformed.
int FindBehind(const Bytes &messages) {
    std::string error = kNone;
    const int index = Find(NalUnit(kPrefix, Joined(messages, Joined(Message(4, kFormat), {0x80}))), &error);
    EXPECT_EQ(error, kNone);
    return index;
}

TEST(SeiReader, HeadersOfBothStandards) {
    for (const Bytes &start_code : {Bytes{0, 0, 1}, Bytes{0, 0, 0, 1}}) {
        EXPECT_EQ(Find(WithHeader(Joined(start_code, {0x06}))), 2);
        for (const unsigned char first : Bytes{0x4E, 0x4F, 0x50, 0x51}) {  // the low bit is of nuh_layer_id
            EXPECT_EQ(Find(WithHeader(Joined(start_code, {first, 0x01}))), 2);
            EXPECT_EQ(Find(WithHeader(Joined(start_code, {first, 0x0B}))), 2);
        }
    }
}

TEST(SeiReader, EveryOtherHeaderIsRefused) {
    for (unsigned int first = 0; first < 256; first++) {
        const bool is_sei = first == 0x06 || (first >= 0x4E && first <= 0x51);
        Bytes nal = WithHeader({0, 0, 1, static_cast<unsigned char>(first), 1});
        if (first == 0x06)
            nal = WithHeader({0, 0, 1, 0x06});
        EXPECT_EQ(Find(nal), is_sei ? 2 : -1) << first;
    }
}

TEST(SeiReader, StartCodesAndLengthsThatAreRefused) {
    const auto expect_refused = [](const Bytes &nal, int length) {
        Bytes exact(nal);
        SEI_afd_t afd;
        const TraceCapture trace;
        EXPECT_EQ(parse_sei_afd_nal(exact.data(), length, &afd), FALSE);
        char text[80];
        std::snprintf(text, sizeof text, "buffer:%p of length:%d is no SEI NAL unit.\n",
                      static_cast<void *>(exact.data()), length);
        EXPECT_THAT(trace.messages(), ElementsAre(Field(&TracedMessage::text, text)));
    };
    for (const Bytes &start_code :
         {Bytes{0, 0, 0, 0, 1}, Bytes{0, 0, 2}, Bytes{0, 1}, Bytes{1, 0, 1}, Bytes{0, 1, 1}, Bytes{}}) {
        const Bytes nal = WithHeader(Joined(start_code, {0x4E, 1}));
        expect_refused(nal, static_cast<int>(nal.size()));
    }
    for (const Bytes &nal : {Bytes{0}, Bytes{0, 0}, Bytes{0, 0, 1}, Bytes{0, 0, 0, 1}, Bytes{0, 0, 1, 0x4E},
                             Bytes{0, 0, 0, 1, 0x4E}})
        expect_refused(nal, static_cast<int>(nal.size()));
    for (const int length : {0, -1, INT_MIN})
        expect_refused(WithHeader({0, 0, 1, 0x4E, 1}), length);
}

TEST(SeiReader, NoMessages) {
    for (const Bytes &header : {Bytes{0, 0, 1, 6}, Bytes{0, 0, 1, 0x4E, 1}}) {
        for (const Bytes &end : {Bytes{}, Bytes{0x80}, Bytes{0, 0, 0}, Bytes{0x80, 0}, Bytes{4},
                                 Bytes{4, 0x80}, Bytes{0xFF}, Bytes{4, 0xFF, 0xFF}, Bytes{0, 0, 3}}) {
            std::string error;
            EXPECT_EQ(Find(Joined(header, end), &error), -1);
            EXPECT_EQ(error, kNone);
        }
    }
}

// Zeros at the end belong to nothing, but those of the header do: what lies behind the data is not looked at.
TEST(SeiReader, AHeaderThatEndsInAZeroIsNoEnd) {
    Bytes nal = WithHeader({0, 0, 1, 0x4E, 0});
    SEI_afd_t afd{};
    const TraceCapture trace;
    EXPECT_EQ(parse_sei_afd_nal(nal.data(), 5, &afd), FALSE);
    EXPECT_EQ(trace.messages().at(0).text, kNone);
    EXPECT_EQ(parse_sei_afd_nal(nal.data(), static_cast<int>(nal.size()), &afd), TRUE);
}

TEST(SeiReader, MessagesOfEverySizeArePassedOver) {
    for (const size_t size : std::vector<size_t>{0, 1, 2, 254, 255, 256, 509, 510, 511, 765, 5000}) {
        SCOPED_TRACE(size);
        for (const unsigned char filler : Bytes{0x11, 0, 3, 0x80, 0xFF}) {  // zeros need emulation prevention
            const Bytes message = Message(5, Bytes(size, filler));
            EXPECT_EQ(FindBehind(message), static_cast<int>(message.size()) + 2);
            EXPECT_EQ(FindBehind(Joined(message, message)), 2 * static_cast<int>(message.size()) + 2);
        }
    }
}

TEST(SeiReader, TypesAreNotTakenModulo256) {
    for (const size_t type : std::vector<size_t>{254, 255, 256, 260, 516, 1000}) {
        const Bytes payload = {0xB5, 0, 0x31, 'D', 'T', 'G', '1', 0x41, 0xF1};
        const Bytes message = Message(type, payload);
        EXPECT_EQ(FindBehind(message), static_cast<int>(message.size()) + 2) << type;
    }
}

TEST(SeiReader, LongMessageIsReadToItsEnd) {
    Bytes payload = kFormat;
    payload.resize(600, 0);
    EXPECT_EQ(Find(NalUnit(kPrefix, Joined(Message(4, payload), {0x80}))), 4);
    EXPECT_EQ(FindBehind(Message(5, Bytes(300, 0))), 303 + 2);
}

TEST(SeiReader, DataThatEndsInZerosInsideAPayload) {
    for (const Bytes &end :
         {Bytes{0, 0, 0x80}, Bytes{0, 0, 3, 0x80}, Bytes{0, 0, 3}, Bytes{0, 0, 0, 0x80, 0, 0}})
        EXPECT_EQ(Find(Joined({0, 0, 1, 0x4E, 1, 5, 4}, end)), -1);
}

TEST(SeiReader, PayloadSizesThatPointPastTheData) {
    EXPECT_EQ(FindBehind({5, 12}), -1);
    EXPECT_EQ(FindBehind({5, 254}), -1);
    EXPECT_EQ(FindBehind({5, 0xFF, 0xFF, 0}), -1);
    // even of a message that has all its elements
    EXPECT_EQ(Find({0, 0, 1, 0x4E, 1, 4, 10, 0xB5, 0, 0x31, 'D', 'T', 'G', '1', 0x41, 0xF8, 0x80}), -1);
    EXPECT_EQ(Find({0, 0, 1, 0x4E, 1, 4, 9, 0xB5, 0, 0x31, 'D', 'T', 'G', '1', 0x41, 0xF8, 0x80}), 2);
    // nor do zeros behind the trailing bits make up for what is missing
    EXPECT_EQ(Find({0, 0, 1, 0x4E, 1, 4, 11, 0xB5, 0, 0x31, 'D', 'T', 'G', '1', 0x41, 0xF8, 0x80, 0}), -1);
}

// A byte 3 behind more than two zeros goes as well, as in the removal of the H.265 library.
TEST(SeiReader, EmulationPreventionBehindMoreZeros) {
    Bytes nal = {0, 0, 1, 0x4E, 1, 5, 4, 0, 0, 0, 3, 9};
    EXPECT_EQ(Find(Joined(nal, Joined(Message(4, kFormat), {0x80}))), 8);
}

// Zeros that one element ends in and those of the next one make a row.
TEST(SeiReader, EmulationPreventionBetweenElements) {
    const Bytes country_and_provider = {0, 0, 1, 'D', 'T', 'G', '1', 0x41, 0xF8};
    EXPECT_EQ(Find(NalUnit(kPrefix, Joined(Message(4, country_and_provider), {0x80}))), 2);
    const Bytes provider_and_identifier = {0xB5, 0, 0, 1, 0, 0, 2};
    EXPECT_EQ(FindBehind(Message(4, provider_and_identifier)), 9 + 2);
}

// Sums of 2^32 - 1 and more, in front of a whole message.
TEST(SeiReader, SumsAroundTheLargestNumber) {
    const auto find_behind = [](const Bytes &begin, const Bytes &end) {
        Bytes nal = Joined({0, 0, 1, 0x4E, 1}, begin);
        nal.resize(nal.size() + UINT_MAX / 255, 0xFF);
        return Find(Joined(Joined(nal, end), Joined(Message(4, kFormat), {0x80})));
    };
    EXPECT_EQ(find_behind({5}, {0}), -1) << "the largest size";
    EXPECT_EQ(find_behind({5}, {1}), -1) << "a size beyond it is not taken modulo 2^32";
    EXPECT_EQ(find_behind({}, {5, 0}), -1) << "a type beyond it is no type";
    EXPECT_EQ(find_behind({}, {0, 0}), static_cast<int>(UINT_MAX / 255) + 4) << "the largest type";
}

TEST(SeiReader, EveryFormOfTrailingBits) {
    Bytes nal = WithHeader({0, 0, 1, 0x4E, 1});
    EXPECT_EQ(Find(Joined(nal, {0})), 2);
    EXPECT_EQ(Find(Joined(nal, {0, 0, 0})), 2);
    nal.pop_back();
    EXPECT_EQ(Find(nal), 2) << "none";
    EXPECT_EQ(Find(Joined(nal, {0x10})), 2) << "a stop bit elsewhere is the begin of a message";
}

// Three messages in a block of exact size, cut at every byte: found when its whole payload is there.
TEST(SeiReader, NalUnitCutAtEveryByte) {
    const Bytes first = Message(1, {0x31, 0x11});
    const Bytes second = Message(5, Bytes(258, 0x11));
    const Bytes whole = Joined({0, 0, 1, 0x4E, 1}, Joined(Joined(first, second), Message(4, kFormat)));
    for (size_t length = 1; length <= whole.size(); length++)
        ASSERT_EQ(Find(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length))),
                  length == whole.size() ? 4 + 261 + 2 : -1)
            << length;
}

// The H.265 library's own walk gives the same header, as long as no type or size reaches 255.
TEST(SeiReader, AgreesWithTheOtherWalk) {
    std::vector<Bytes> nals = SampleNalUnits("captions-a53.hevc", kPrefix);
    nals.push_back(SampleNalUnits("units/sei-multiple.nal").at(0));
    nals.push_back(NalUnit(kPrefix, Joined(Message(136, Bytes(9, 0)), Joined(Message(4, kFormat), {0x80}))));
    int compared = 0;
    for (Bytes &nal : nals) {
        int offset = 0;
        int header_offset = 0;
        int suid = 0;
        BOOL more = FALSE;
        SEI_message_t header{};
        do {
            ASSERT_EQ(H265Lib_DetermineSEIType(nal.data(), static_cast<int>(nal.size()), &offset,
                                               &header_offset, &header, &suid, &more),
                      TRUE);
            SEI_message_t found{};
            SEI_cc_t captions;
            SEI_afd_t afd;
            if (suid == SUID_CLOSED_CAPTION) {
                ASSERT_EQ(parse_sei_cc_nal(nal.data(), static_cast<int>(nal.size()), &captions), TRUE);
                found = captions.header;
            } else if (suid == SUID_AFD) {
                ASSERT_EQ(parse_sei_afd_nal(nal.data(), static_cast<int>(nal.size()), &afd), TRUE);
                found = afd.header;
            } else {
                continue;
            }
            compared++;
            EXPECT_EQ(found.payload_type, header.payload_type);
            EXPECT_EQ(found.payload_size, header.payload_size);
            EXPECT_EQ(found.payload_index, header.payload_index);
        } while (more);
    }
    EXPECT_EQ(compared, 16 + 2 + 1);
}

}  // namespace
}  // namespace test
