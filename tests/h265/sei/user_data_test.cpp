#include "h265/sei/user_data.h"

#include <gmock/gmock.h>

#include <climits>
#include <numeric>

#include "h265/sei/built_sei.h"
#include "support/silence.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr BYTE kUsa = 0xB5;
constexpr BYTE kExtended = 0xFF;
const std::string kRefused = "SEI RBSP Encapsulation failed!\n";

std::string TooSmall(int length) {
    return "SEI output buffer length:" + std::to_string(length) + " is too small!\n";
}

Bytes Counting(size_t size) {
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0x10));
    return bytes;
}

const Bytes kUuid = Counting(16);

// One of the two writers with the head of its message.
struct Writer {
    unsigned char type;
    std::string function;
    Bytes head;        // behind the size byte, in front of the payload
    int spare;         // bytes that it asks for besides the payload
    std::string full;  // of a payload that leaves no room for the trailing bits: "<full>:36 is ... . <end>"
    std::string end;
    std::function<int(unsigned char *buffer, unsigned int buffer_len, unsigned char *payload,
                      unsigned int payload_size)>
        write;

    int Capacity(size_t payload_size) const { return static_cast<int>(payload_size) + spare; }

    Bytes Header(size_t payload_size) const {
        return Joined({kSeiPrefix, {type, static_cast<unsigned char>(payload_size + head.size())}, head});
    }
    Bytes NalUnit(const Bytes &payload) const {
        return Joined({Header(payload.size()), Encapsulated(payload), {0x80}});
    }
    int operator()(Output *output, int capacity, Bytes payload) const {
        return write(output->data(), static_cast<unsigned int>(capacity), payload.data(),
                     static_cast<unsigned int>(payload.size()));
    }
};

Writer Registered(BYTE country_code, BYTE extension_byte) {
    return {4,
            "_format_sei_user_data_registered_nal",
            country_code == kExtended ? Bytes{extension_byte, kPrefill} : Bytes{country_code},
            11,
            "Ouput Buffer length",
            "Failed to encapsulate.\n",
            [=](unsigned char *buffer, unsigned int buffer_len, unsigned char *payload, unsigned int size) {
                return _format_sei_user_data_registered_nal(buffer, buffer_len, country_code, extension_byte,
                                                            payload, size);
            }};
}

Writer Unregistered(const Bytes &uuid) {
    return {5,
            "_format_sei_user_data_unregistered_nal",
            uuid,
            static_cast<int>(uuid.size()) + 8,
            "Ouputbuffer length",
            "Fail to encapsulate.\n",
            [=](unsigned char *buffer, unsigned int buffer_len, unsigned char *payload, unsigned int size) {
                return _format_sei_user_data_unregistered_nal(
                    buffer, buffer_len, uuid.data(), static_cast<unsigned int>(uuid.size()), payload, size);
            }};
}

const std::vector<Writer> kWriters = {Registered(kUsa, 0), Registered(kExtended, 0x01), Unregistered(kUuid)};

TEST(UserDataFraming, RegisteredHasTheCountryCodeInFrontOfThePayload) {
    Output output(19);
    EXPECT_EQ(Registered(kUsa, 0)(&output, 19, {0x00, 0x31, 0x44, 0x54, 0x47, 0x31, 0x41, 0xF8}), 17);
    EXPECT_EQ(output.bytes(), output.Holding({0x00, 0x00, 0x01, 0x4E, 0x01, 0x04, 0x09, 0xB5, 0x00, 0x31,
                                              0x44, 0x54, 0x47, 0x31, 0x41, 0xF8, 0x80}));
}

TEST(UserDataFraming, TheExtensionByteTakesThePlaceOfTheCountryCode) {
    Output output(24);
    EXPECT_EQ(Registered(kExtended, 0x01)(&output, 24, {0xAA, 0xBB, 0xCC}), 13);
    EXPECT_EQ(output.bytes(), output.Holding({0x00, 0x00, 0x01, 0x4E, 0x01, 0x04, 0x05, 0x01, kPrefill, 0xAA,
                                              0xBB, 0xCC, 0x80}));
}

TEST(UserDataFraming, UnregisteredHasTheUuidInFrontOfThePayload) {
    const Bytes payload = Counting(12);
    Output output(36);
    EXPECT_EQ(Unregistered(kUuid)(&output, 36, payload), 36);
    EXPECT_EQ(output.bytes(), Joined({{0x00, 0x00, 0x01, 0x4E, 0x01, 0x05, 0x1C}, kUuid, payload, {0x80}}));
}

TEST(UserDataFraming, ThePayloadHasEmulationPreventionWhereverItNeedsIt) {
    for (const Writer &writer : kWriters) {
        for (size_t place = 0; place + 3 <= 12; place++) {
            for (unsigned char code = 0; code <= 4; code++) {
                SCOPED_TRACE(writer.function + " " + std::to_string(place) + " " + std::to_string(code));
                Bytes payload = Counting(12);
                payload[place] = payload[place + 1] = 0;
                payload[place + 2] = code;
                const Bytes nal = writer.NalUnit(payload);
                ASSERT_EQ(nal.size(), 5 + 2 + writer.head.size() + 12 + (code <= 3) + 1);
                Output output(64);
                ASSERT_EQ(writer(&output, 64, payload), static_cast<int>(nal.size()));
                ASSERT_EQ(output.bytes(), output.Holding(nal));
            }
        }
    }
}

TEST(UserDataFraming, WhatStandsInFrontOfThePayloadHasNoEmulationPrevention) {
    Output registered(16);
    EXPECT_EQ(Registered(0x00, 0)(&registered, 16, {0x00, 0x01, 0x05}), 12);
    EXPECT_EQ(registered.bytes(),
              registered.Holding({0x00, 0x00, 0x01, 0x4E, 0x01, 0x04, 0x04, 0x00, 0x00, 0x01, 0x05, 0x80}));
    Output unregistered(16);
    EXPECT_EQ(Unregistered({0x00, 0x00, 0x01, 0x00, 0x00})(&unregistered, 16, {0x02}), 14);
    EXPECT_EQ(unregistered.bytes(), unregistered.Holding({0x00, 0x00, 0x01, 0x4E, 0x01, 0x05, 0x06, 0x00,
                                                          0x00, 0x01, 0x00, 0x00, 0x02, 0x80}));
}

TEST(UserDataFraming, TheSizeByteWraps) {
    for (const Writer &writer : kWriters) {
        for (const size_t size : {239U, 250U, 254U, 255U, 256U, 600U}) {
            SCOPED_TRACE(writer.function + " " + std::to_string(size));
            const Bytes nal = writer.NalUnit(Bytes(size, 0x55));
            Output output(700);
            EXPECT_EQ(writer(&output, 700, Bytes(size, 0x55)), static_cast<int>(nal.size()));
            EXPECT_EQ(output.bytes(), output.Holding(nal));
        }
    }
    EXPECT_EQ(Unregistered(kUuid).Header(250)[6], 0x0A);
}

TEST(UserDataFraming, ABufferOneByteTooSmallIsLeftAlone) {
    const Bytes payload = Counting(8);
    for (const Writer &writer : kWriters) {
        for (int capacity = 0; capacity < writer.Capacity(payload.size()); capacity++) {
            SCOPED_TRACE(writer.function + " " + std::to_string(capacity));
            Output output(capacity);
            const TraceCapture trace;
            ASSERT_EQ(writer(&output, capacity, payload), 0);
            InSilence([&] { EXPECT_EQ(writer(&output, capacity, payload), 0); });
            ASSERT_EQ(output.bytes(), output.Holding({}));
            ASSERT_THAT(trace.Errors(), ElementsAre(TooSmall(capacity)));
            ASSERT_EQ(trace.messages().back().function, writer.function);
            ASSERT_EQ(trace.Assertions(),
                      capacity > 3 ? std::vector<std::string>{} : std::vector{AssertionOf("buffer_len > 3")});
        }
        Output output(writer.Capacity(payload.size()));
        EXPECT_EQ(writer(&output, writer.Capacity(payload.size()), payload),
                  static_cast<int>(writer.NalUnit(payload).size()));
    }
}

// The check of the length does not count emulation prevention bytes.
TEST(UserDataFraming, APayloadMayGrowOutOfTheBuffer) {
    for (const Writer &writer : kWriters) {
        const int room = writer.spare - 8 - static_cast<int>(writer.head.size());  // behind the trailing bits
        for (int grown = 0; grown <= room + 2; grown++) {
            SCOPED_TRACE(writer.function + " " + std::to_string(grown));
            Bytes payload;
            for (int i = 0; i < grown; i++)
                payload.insert(payload.end(), {0x00, 0x00, 0x01});
            payload.push_back(0x99);
            const int capacity = writer.Capacity(payload.size());
            const Bytes header = writer.Header(payload.size());
            Output output(capacity);
            const TraceCapture trace(3);
            const int result = writer(&output, capacity, payload);
            if (grown <= room) {
                EXPECT_EQ(output.bytes(), output.Holding(writer.NalUnit(payload)));
                EXPECT_EQ(result, capacity - room + grown);
                EXPECT_THAT(trace.messages(), IsEmpty());
            } else if (grown == room + 1) {
                EXPECT_EQ(output.bytes(), Joined({header, Encapsulated(payload)}));
                EXPECT_EQ(result, capacity + 1);  // the missing byte is counted
                EXPECT_THAT(
                    trace.Errors(),
                    ElementsAre(writer.full + ":" + std::to_string(capacity) +
                                " is too small for SEI NAL length:" + std::to_string(capacity) +
                                " plus header length:" + std::to_string(header.size()) + ". " + writer.end));
            } else {
                EXPECT_EQ(output.bytes(), output.Holding(header));
                EXPECT_EQ(result, 0);
                EXPECT_THAT(trace.Errors(), ElementsAre(kRefused));
            }
            for (const TracedMessage &message : trace.messages())
                EXPECT_EQ(message.function, writer.function);
        }
    }
}

TEST(UserDataFraming, LengthsFromNegativeNumbersAreTooSmall) {
    for (const Writer &writer : kWriters) {
        for (const int capacity : {-1, -100, INT_MIN}) {
            Output output(64);
            const TraceCapture trace(3);
            EXPECT_EQ(writer(&output, capacity, Counting(4)), 0);
            EXPECT_EQ(output.bytes(), output.Holding({}));
            EXPECT_THAT(trace.Errors(), ElementsAre(TooSmall(capacity)));
        }
    }
}

TEST(UserDataFraming, HugeSizesAreRefusedAndDoNotWrap) {
    Bytes payload = Counting(4);
    for (const unsigned int size : {53U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFF0U, 0xFFFFFFF8U, 0xFFFFFFFFU}) {
        SCOPED_TRACE(size);
        for (const Writer &writer : kWriters) {
            Output output(60);
            const TraceCapture trace(3);
            EXPECT_EQ(writer.write(output.data(), 60, payload.data(), size), 0);
            EXPECT_EQ(output.bytes(), output.Holding({}));
            EXPECT_THAT(trace.Errors(), ElementsAre(TooSmall(60)));
        }
        Output output(60);
        const TraceCapture trace(3);
        EXPECT_EQ(
            _format_sei_user_data_unregistered_nal(output.data(), 60, kUuid.data(), size, payload.data(), 4),
            0);
        EXPECT_EQ(output.bytes(), output.Holding({}));
        EXPECT_THAT(trace.Errors(), ElementsAre(TooSmall(60)));
    }
}

TEST(UserDataFraming, AnEmptyPayloadLeavesTheHeaderAlone) {
    for (const Writer &writer : kWriters) {
        Output output(64);
        unsigned char payload = 0x77;
        const TraceCapture trace;
        EXPECT_EQ(writer.write(output.data(), 64, &payload, 0), 0);
        EXPECT_EQ(output.bytes(), output.Holding(writer.Header(0)));
        EXPECT_THAT(trace.Errors(), ElementsAre(kRefused));
        EXPECT_EQ(trace.Assertions(), writer.type == 5 ? std::vector<std::string>{}
                                                       : std::vector{AssertionOf("payload_size > 0")});
    }
}

TEST(UserDataFraming, AnEmptyUuidIsReportedAndLeftOut) {
    Output output(12);
    unsigned char payload = 0x77;
    const TraceCapture trace;
    EXPECT_EQ(_format_sei_user_data_unregistered_nal(output.data(), 12, kUuid.data(), 0, &payload, 1), 9);
    EXPECT_EQ(output.bytes(), output.Holding({0x00, 0x00, 0x01, 0x4E, 0x01, 0x05, 0x01, 0x77, 0x80}));
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("uuid_len > 0")));
    EXPECT_THAT(trace.Errors(), IsEmpty());
}

TEST(UserDataFraming, NullPointersAreReportedAndFail) {
    for (const Writer &writer : kWriters) {
        Output output(64);
        unsigned char payload = 0x77;
        TraceCapture trace;
        EXPECT_EQ(writer.write(nullptr, 64, &payload, 1), 0);
        EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("buffer != NULL")));
        trace.Clear();
        EXPECT_EQ(writer.write(output.data(), 64, nullptr, 1), 0);
        EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("user_data_payload != NULL")));
        EXPECT_EQ(output.bytes(), output.Holding({}));
        EXPECT_THAT(trace.Errors(), IsEmpty());
    }
    Output output(64);
    unsigned char payload = 0x77;
    const TraceCapture trace;
    EXPECT_EQ(_format_sei_user_data_unregistered_nal(output.data(), 64, nullptr, 16, &payload, 1), 0);
    EXPECT_EQ(output.bytes(), output.Holding({}));
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("pUuid_iso_iec_11578 != NULL")));
    EXPECT_THAT(trace.Errors(), IsEmpty());
}

}  // namespace
}  // namespace test
