#include <gmock/gmock.h>

#include <climits>

#include "h265d/sei/message_walk.h"
#include "support/interposed.h"
#include "support/silence.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kTooShort[] = "NALU too short to find User data registered specific SEI!\n";
constexpr char kNotFound[] = "Cannot find User data registered specific SEI!\n";
constexpr char kNotDetermined[] = "Failed to determine SEI data registered type!\n";

const Bytes kCaptions = {0xB5, 0, 0x31, 'G', 'A', '9', '4', 3, 0xC0, 0xFF, 0xFF};
const Bytes kActiveFormat = {0xB5, 0, 0x31, 'D', 'T', 'G', '1', 0x41, 0xF8};

std::string OutOfSodb(int index, int length) {
    return "It seems that we are out of the SODB buffer! index:" + std::to_string(index) +
           ", SODB buffer length:" + std::to_string(length) + ".\n";
}

std::string PastSodb(int offset, int length) {
    return "We are out of the SODB. Payload Offset:" + std::to_string(offset) +
           " maximum value should be SeiSodbLength:" + std::to_string(length) + ".\n";
}

std::string Reserved(int type, int limit) {
    return "SEI Payload type:" + std::to_string(type) +
           " is greater than the current MAX_PAYLOAD_TYPE:" + std::to_string(limit) +
           ". Reserved SEI message, skip decoding.\n";
}
const Outcome kNothing = {0x55, 0x55, 0x55, 0, kUntouched, FALSE};  // of a failure in front of any message

Bytes Joined(Bytes first, const Bytes &second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Bytes Message(unsigned char type, const Bytes &payload) {
    return Joined({type, static_cast<unsigned char>(payload.size())}, payload);
}

// A prefix SEI NAL unit with these bytes and trailing bits.
Bytes Prefix(const Bytes &messages) {
    return NalUnit(kPrefix, Joined(messages, {0x80}), 3);
}

// The same made longer than the local scratch: zero bytes behind the trailing bits change nothing.
Bytes OnHeap(Bytes nal) {
    nal.resize(1025);
    return nal;
}

// Calls once, with the local scratch and with one from the heap, and checks what came out and was reported.
void ExpectFailure(const Bytes &nal, const Outcome &outcome, const std::vector<std::string> &errors,
                   const std::vector<std::string> &warnings = {}, const Walk &before = {}) {
    for (const bool on_heap : {false, true}) {
        SCOPED_TRACE(on_heap ? "heap scratch" : "local scratch");
        const ControlledClock clock(FreshTime());
        const TraceCapture trace(4);
        Walk walk = before;
        EXPECT_EQ(walk.Next(on_heap ? OnHeap(nal) : nal), FALSE);
        EXPECT_EQ(walk.Result(), outcome);
        EXPECT_EQ(trace.Errors(), errors);
        EXPECT_EQ(trace.Texts(4), warnings);
        InSilence([&] {
            Walk silent = before;
            EXPECT_EQ(silent.Next(on_heap ? OnHeap(nal) : nal), FALSE);
            EXPECT_EQ(silent.Result(), outcome);
        });
    }
}

TEST(SeiMessageScan, PictureTimingMessageIsFoundAndTraced) {
    const Bytes nal = {0, 0, 1, 0x4E, 1, 1, 3, 0xAA, 0xBB, 0xCC, 0x80};
    const TraceCapture trace;
    Walk walk;
    EXPECT_EQ(walk.Next(nal), TRUE);
    EXPECT_EQ(walk.Result(), (Outcome{1, 3, 2, 5, SUID_PICTURE_TIMING, FALSE}));
    EXPECT_EQ(walk.nal_type_offset, 3);

    EXPECT_THAT(trace.Texts(8), ElementsAre("Found Annex-B 3 bytes start code prefix.\n"));
    EXPECT_THAT(
        trace.Texts(7),
        ElementsAre("Attempting to find the stop bit position for the LastByte[10]:80.\n",
                    "DEBUG CHECK - NAL type:4E, BufferLength:11, SODBLength:5, Current idx:0, Next SODB "
                    "bytes: 0x01 03 AA BB CC.\n",
                    "Parsing SEI message, Payload index:2, Payload_type:0x1(1), Payload_size:0x3(3), Payload "
                    "Offset:5.\n",
                    "Found SEI payload type:1 and payload size:3, enSUID:7.\n",
                    "We are at the end of SODB, there are no more \"sei_message\".\n"));
    EXPECT_THAT(trace.Texts(6),
                ElementsAre("Found StopBitPos:8 for LastByte[10]:80, NALLenWoRBSPTrailingBits:7, "
                            "NALTypeOffset:3, BufferLength:11.\n"));
    EXPECT_EQ(trace.messages().size(), 7u);
    for (const TracedMessage &message : trace.messages())
        EXPECT_EQ(message.function, message.level == 8 ? "_GetNALTypeOffset" : "H265Lib_DetermineSEIType");
}

TEST(SeiMessageScan, StartCodeOfFourBytes) {
    Walk walk;
    EXPECT_EQ(walk.Next(NalUnit(kPrefix, {1, 1, 0x31, 0x80}, 4)), TRUE);
    EXPECT_EQ(walk.Result(), (Outcome{1, 1, 2, 3, SUID_PICTURE_TIMING, FALSE}));
    EXPECT_EQ(walk.nal_type_offset, 4);
}

TEST(SeiMessageScan, BytesBehindTheDataAreTracedAsZero) {
    const TraceCapture trace(7);
    Walk walk;
    walk.payload_offset = 2;
    walk.nal_type_offset = 3;
    walk.Next({0, 0, 1, 0x4E, 1, 1, 3, 0xAA, 0xBB, 0xCC, 0x80});
    EXPECT_THAT(trace.Texts(7),
                Contains("DEBUG CHECK - NAL type:4E, BufferLength:11, SODBLength:5, Current idx:2, Next SODB "
                         "bytes: 0xAA BB CC 00 00.\n"));
}

TEST(SeiMessageScan, KindsAreTold) {
    const struct {
        unsigned char type;
        Bytes payload;
        int suid;
    } cases[] = {{1, {0x31}, SUID_PICTURE_TIMING},
                 {136, {0x60, 0x40}, SUID_TIME_CODE},
                 {4, kCaptions, SUID_CLOSED_CAPTION},
                 {4, kActiveFormat, SUID_AFD},
                 {4, {1, 2, 4, 'G', 'A', '9', '4', 3}, SUID_CLOSED_CAPTION},  // any country and provider
                 {4, {5, 6, 7, 'D', 'T', 'G', '1'}, SUID_AFD},
                 {0, {0x11}, SUID_UNKNOWN},
                 {5, {0x11}, SUID_UNKNOWN},
                 {202, {0x11}, SUID_UNKNOWN}};
    for (const auto &[type, payload, suid] : cases) {
        SCOPED_TRACE(int{type});
        const TraceCapture trace(5);
        Walk walk;
        EXPECT_EQ(walk.Next(Prefix(Message(type, payload))), TRUE);
        const int size = static_cast<int>(payload.size());
        EXPECT_EQ(walk.Result(), (Outcome{type, static_cast<UINT>(size), 2, 2 + size, suid, FALSE}));
        std::vector<std::string> notices;
        if (suid == SUID_UNKNOWN)
            notices = {"SEI Payload type was not in the known types:" + std::to_string(type) + ".\n"};
        EXPECT_EQ(trace.Texts(5), notices);
        EXPECT_EQ(trace.messages().size(), notices.size());
    }
}

TEST(SeiMessageScan, WalksOf1To20Messages) {
    const std::pair<Bytes, int> kinds[] = {{Message(1, {0x31}), SUID_PICTURE_TIMING},
                                           {Message(4, kCaptions), SUID_CLOSED_CAPTION},
                                           {Message(136, {0, 0, 1, 0, 0}), SUID_TIME_CODE},
                                           {Message(4, kActiveFormat), SUID_AFD},
                                           {Message(132, Bytes(17, 0)), SUID_UNKNOWN}};
    for (const int nal_unit_type : {kPrefix, kSuffix}) {
        for (size_t count = 1; count <= 20; count++) {
            SCOPED_TRACE(std::to_string(count) + " messages, type " + std::to_string(nal_unit_type));
            Bytes rbsp;
            for (size_t i = 0; i < count; i++)
                rbsp = Joined(rbsp, kinds[i % 5].first);
            const Bytes nal = NalUnit(nal_unit_type, Joined(rbsp, {0x80}));
            Walk walk;
            for (size_t i = 0; i < count; i++) {
                const auto &[message, suid] = kinds[i % 5];
                const int start = walk.payload_offset;
                ASSERT_EQ(walk.Next(nal), TRUE);
                const int end = start + static_cast<int>(message.size());
                ASSERT_EQ(walk.Result(), (Outcome{message[0], message[1], static_cast<UINT>(start + 2), end,
                                                  suid, i + 1 < count}));
            }
        }
    }
}

TEST(SeiMessageScan, TwoBytesBehindAPayloadAreTakenAsPadding) {
    for (size_t left = 0; left <= 4; left++) {
        Walk walk;
        EXPECT_EQ(walk.Next(Prefix(Joined({1, 1, 0x31}, Bytes(left, 0x11)))), TRUE);
        EXPECT_EQ(walk.Result(), (Outcome{1, 1, 2, 3, SUID_PICTURE_TIMING, left > 2})) << left;
    }
}

TEST(SeiMessageScan, EveryFormOfTrailingBits) {
    const Outcome outcome = {1, 3, 2, 5, SUID_PICTURE_TIMING, FALSE};
    // the payload ends in bytes that need emulation prevention, or look like it, or like trailing bits
    for (const Bytes &end : {Bytes{0x31, 0x80}, Bytes{0, 0}, Bytes{0, 3}, Bytes{0x80, 0x80}}) {
        for (const Bytes &trailing : {Bytes{0x80}, Bytes{0x80, 0}, Bytes{0x80, 0, 0}, Bytes{0x80, 0, 0, 0}}) {
            Bytes nal = NalUnit(kPrefix, Joined({1, 3, 0}, Joined(end, {0x80})));
            nal.pop_back();
            Walk walk;
            EXPECT_EQ(walk.Next(Joined(nal, trailing)), TRUE);
            EXPECT_EQ(walk.Result(), outcome);
        }
    }
    for (unsigned int stop_bit = 0x01; stop_bit < 0x80; stop_bit <<= 1) {  // the payload's last byte holds it
        Walk walk;
        EXPECT_EQ(walk.Next({0, 0, 1, 0x4E, 1, 1, 3, 0, 1, static_cast<unsigned char>(stop_bit), 0, 0}),
                  TRUE);
        EXPECT_EQ(walk.Result(), outcome);
    }
    Walk walk;  // a NAL unit that ends in an emulation prevention byte
    EXPECT_EQ(walk.Next({0, 0, 1, 0x4E, 1, 1, 3, 5, 0, 0, 3}), TRUE);
    EXPECT_EQ(walk.Result(), outcome);
}

TEST(SeiMessageScan, NoDataBehindTheHeader) {
    const Outcome outcome = {0, 0, 0, 0, kUntouched, FALSE};
    for (const Bytes &payload : {Bytes{}, Bytes{0}, Bytes{0, 0, 0, 0, 0}, Bytes{0x80}, Bytes{0x80, 0, 0}})
        ExpectFailure(Joined({0, 0, 1, 0x4E, 1}, payload), outcome, {OutOfSodb(0, 0)});
}

TEST(SeiMessageScan, HalfAHeaderIsRefused) {
    const TraceCapture trace(3);
    Walk walk;
    EXPECT_EQ(walk.Next({0, 0, 1, 0x4E}), FALSE);
    EXPECT_EQ(walk.Result(), (Outcome{0, 0, 0, 0, kUntouched, FALSE}));
    EXPECT_THAT(trace.Errors(), ElementsAre("Failed to get SODB from RBSP. Output buffer is too small.\n"));
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("BufferLen >= 7")));
    InSilence([] { EXPECT_EQ(Walk().Next({0, 0, 1, 0x4E}), FALSE); });
}

TEST(SeiMessageScan, BytesFFAreAddedToTheFieldBeforeThem) {
    Walk walk;
    EXPECT_EQ(walk.Next(Prefix(Joined({5, 0xFF, 16}, Joined(kActiveFormat, Bytes(7, 0x11))))), TRUE);
    EXPECT_EQ(walk.Result(), (Outcome{4, 16, 3, 19, SUID_AFD, FALSE}));
    walk = {};
    EXPECT_EQ(walk.Next(Prefix(Joined({1, 2, 0xFF}, Bytes(257, 0x11)))), TRUE);
    EXPECT_EQ(walk.Result(), (Outcome{1, 257, 3, 260, SUID_PICTURE_TIMING, FALSE}));
    walk = {};
    EXPECT_EQ(walk.Next(Prefix(Joined({139, 0xFF, 0xFF, 0xFF, 0, 0xFF, 0xFF}, Bytes(510, 0x11)))), TRUE);
    EXPECT_EQ(walk.Result(), (Outcome{136, 510, 7, 517, SUID_TIME_CODE, FALSE}));
}

TEST(SeiMessageScan, HeaderThatTheDataCutsShort) {
    ExpectFailure({0, 0, 1, 0x4E, 1, 1, 0x80}, {1, 0, 0, 0, kUntouched}, {OutOfSodb(1, 1)});
    ExpectFailure({0, 0, 1, 0x4E, 1, 1, 0xFF, 0x80}, {0, 0, 0, 0, kUntouched}, {OutOfSodb(2, 2)});
    ExpectFailure({0, 0, 1, 0x4E, 1, 0xFF, 0xFF, 0xFF}, {253, 0, 0, 0, kUntouched}, {OutOfSodb(3, 3)});
}

TEST(SeiMessageScan, BytesOfAnEarlierCallAreNotRead) {
    const auto next = [](const Bytes &payload) {
        Walk().Next(Joined({0, 0, 1, 0x4E, 1}, Bytes(1000, 0xFF)));  // still there where the scratch is
        Walk walk;
        walk.Next(Joined({0, 0, 1, 0x4E, 1}, payload));
        return walk.Result();
    };
    const ControlledClock clock(FreshTime());
    const TraceCapture trace(3);
    EXPECT_EQ(next({1, 0x80}), (Outcome{1, 0, 0, 0, kUntouched, FALSE}));
    EXPECT_EQ(next({1, 0, 0x80}), (Outcome{1, 0, 2, 2, SUID_PICTURE_TIMING, FALSE}));
    EXPECT_EQ(next({136, 1, 0x80}), (Outcome{136, 1, 2, 3, SUID_TIME_CODE, FALSE}));
}

TEST(SeiMessageScan, PayloadThatEndsBehindTheData) {
    ExpectFailure(Prefix({1, 3, 0x31, 0x11}), {1, 3, 2, 5, SUID_PICTURE_TIMING}, {PastSodb(5, 4)});
    ExpectFailure(Prefix({1, 1}), {1, 1, 2, 3, SUID_PICTURE_TIMING}, {PastSodb(3, 2)});
    ExpectFailure(Prefix({136, 1, 0xFF, 0xFF, 0x11}), {136, 511, 4, 515, SUID_TIME_CODE}, {PastSodb(515, 5)});
}

TEST(SeiMessageScan, PayloadSizesBeyondTheRangeOfAnOffset) {
    constexpr UINT runs[] = {8421504, 8421505, 16843009};  // 255 times as much: 2^31 - 128 and so on
    for (const UINT run : runs) {
        const ControlledClock clock(FreshTime());
        const TraceCapture trace(3);
        Walk walk;
        EXPECT_EQ(walk.Next(Joined({0, 0, 1, 0x4E, 1, 136, 0}, Bytes(run, 0xFF))), FALSE);
        const UINT64 end = UINT64{run} * 256 + 2;
        const int offset = end < INT_MAX ? static_cast<int>(end) : INT_MAX;
        EXPECT_EQ(walk.Result(), (Outcome{136, run * 255, run + 2, offset, SUID_TIME_CODE, FALSE}));
        EXPECT_THAT(trace.Errors(), ElementsAre(PastSodb(offset, static_cast<int>(run + 2))));
    }
    EXPECT_EQ(runs[2] * 255, UINT_MAX);
}

TEST(SeiMessageScan, OffsetsOutsideTheData) {
    const Bytes nal = Prefix({1, 1, 0x31, 136, 1, 0x60});
    for (const int offset : {6, 7, INT_MAX, -1, -3, INT_MIN}) {
        SCOPED_TRACE(offset);
        Walk before;
        before.payload_offset = offset;
        before.nal_type_offset = 3;
        ExpectFailure(nal, {0, 0, 0, offset, kUntouched}, {OutOfSodb(offset, 6)}, {}, before);
    }
    const std::pair<int, std::string> next_bytes[] = {{-2, "0x00 00 01 01 31"},
                                                      {INT_MIN, "0x00 00 00 00 00"},
                                                      {5, "0x60 00 00 00 00"},
                                                      {INT_MAX, "0x00 00 00 00 00"}};
    for (const auto &[offset, bytes] : next_bytes) {
        const TraceCapture trace(7);
        Walk walk;
        walk.payload_offset = offset;
        walk.nal_type_offset = 3;
        EXPECT_EQ(walk.Next(nal), FALSE);
        EXPECT_THAT(trace.Texts(7),
                    Contains("DEBUG CHECK - NAL type:4E, BufferLength:12, SODBLength:6, Current idx:" +
                             std::to_string(offset) + ", Next SODB bytes: " + bytes + ".\n"));
    }
}

TEST(SeiMessageScan, HeaderPositionsOutsideTheNalUnit) {
    Walk before;
    before.payload_offset = 3;
    before.nal_type_offset = 5;
    const Outcome outcome = {0x55, 0x55, 0x55, 3, kUntouched, FALSE};
    ExpectFailure(Prefix({1, 1, 0x31, 136, 1, 0x60}), outcome,
                  {"Was expecting NALTypeOffset:5 to be smaller than 4.\n"}, {}, before);
    const Bytes nal = Prefix({1, 1, 0x31, 136, 1, 0x60});
    for (const auto &[offset, length] : {std::pair{4, 4}, {3, 3}, {3, 0}, {3, -1}, {-1, 12}, {INT_MIN, 12}}) {
        SCOPED_TRACE(offset);
        const TraceCapture trace(7);
        Walk walk = before;
        walk.nal_type_offset = offset;
        EXPECT_EQ(H265Lib_DetermineSEIType(nal.data(), length, &walk.payload_offset, &walk.nal_type_offset,
                                           &walk.header, &walk.suid, &walk.more),
                  FALSE);
        EXPECT_EQ(walk.Result(), outcome);
        EXPECT_THAT(trace.Assertions(),
                    ElementsAre(AssertionOf(offset < 0 ? "*pNALTypeOffset >= 0" : "BufferLen >= 7")));
    }
}

TEST(SeiMessageScan, NegativeOffsetsAreReported) {
    const TraceCapture trace;
    Walk walk;
    walk.payload_offset = walk.nal_type_offset = -1;
    EXPECT_EQ(walk.Next(Prefix({1, 1, 0x31})), FALSE);
    EXPECT_THAT(trace.Assertions(),
                ElementsAre(AssertionOf("*pPayloadOffset >= 0"), AssertionOf("*pNALTypeOffset >= 0")));
    EXPECT_EQ(walk.Result(), (Outcome{0x55, 0x55, 0x55, -1, kUntouched, FALSE}));
}

TEST(SeiMessageScan, OtherNalUnitsAreRefused) {
    for (const int nal_unit_type : {0, 35, 38, 41, 63}) {
        for (const int start_code_length : {3, 4}) {
            const Bytes nal = NalUnit(nal_unit_type, {1, 1, 0x31, 0x80}, start_code_length);
            ExpectFailure(nal, kNothing,
                          {"Was expecting NAL type:" + std::to_string(nal_unit_type) +
                           " to be 39(PREFIX_SEI) or 40(SUFFIX_SEI).\n"});
        }
    }
    for (const Bytes &nal : {Bytes{0, 0, 2, 0x4E, 1, 1, 1, 0x31, 0x80}, Bytes{0, 0, 0, 0, 1, 0x4E, 1, 0x80},
                             Bytes{0, 1, 0, 0x4E, 1, 1, 1, 0x31, 0x80}, Bytes{1, 0, 1, 0x4E, 1, 1, 1, 0x31}})
        ExpectFailure(nal, kNothing, {});
}

TEST(SeiMessageScan, ReservedTypesAreRefused) {
    const auto nal = [](int nal_unit_type, unsigned char type) {
        return NalUnit(nal_unit_type, {1, 1, 0x31, type, 1, 0x11, 0x80}, 3);
    };
    const struct {
        int nal_unit_type;
        unsigned char type;
        int limit;
        BOOL accepted;
    } cases[] = {{kSuffix, 146, 146, TRUE},  {kSuffix, 147, 146, FALSE}, {kSuffix, 202, 146, FALSE},
                 {kSuffix, 255, 146, FALSE}, {kPrefix, 147, 202, TRUE},  {kPrefix, 202, 202, TRUE},
                 {kPrefix, 203, 202, FALSE}, {kPrefix, 254, 202, FALSE}};
    for (const auto &[nal_unit_type, type, limit, accepted] : cases) {
        SCOPED_TRACE(int{type});
        const ControlledClock clock(FreshTime());
        const TraceCapture trace(4);
        Walk walk;
        ASSERT_EQ(walk.Next(nal(nal_unit_type, type)), TRUE);
        walk.suid = kUntouched;  // on the second message: the limit holds for each
        EXPECT_EQ(walk.Next(nal(nal_unit_type, type)), accepted);
        EXPECT_EQ(walk.Result(), (Outcome{type, 1, 5, 6, accepted ? SUID_UNKNOWN : kUntouched, FALSE}));
        EXPECT_EQ(trace.Texts(4),
                  accepted ? std::vector<std::string>{} : std::vector<std::string>{Reserved(type, limit)});
        EXPECT_THAT(trace.Errors(), IsEmpty());
    }
}

TEST(SeiMessageScan, RegisteredUserDataThatIsNotKnown) {
    Bytes six = kActiveFormat;
    six.resize(6);
    ExpectFailure(Prefix(Message(4, six)), {4, 6, 2, 8, kUntouched}, {}, {kTooShort});
    ExpectFailure(Prefix({4, 0}), {4, 0, 2, 2, kUntouched}, {}, {kTooShort});
    for (const Bytes &payload :
         {Bytes{0xB5, 0, 0x31, 'G', 'A', '9', '4'}, Bytes{0xB5, 0, 0x31, 'G', 'A', '9', '4', 4, 0xC0},
          Bytes{0xB5, 0, 0x31, 'D', 'T', 'G', '2', 0x41}, Bytes{0xB5, 0, 0x31, 'g', 'a', '9', '4', 3}}) {
        const int size = static_cast<int>(payload.size());
        ExpectFailure(Prefix(Message(4, payload)),
                      {4, static_cast<UINT>(size), 2, 2 + size, SUID_UNKNOWN, FALSE}, {kNotDetermined},
                      {kNotFound});
    }
}

TEST(SeiMessageScan, RegisteredUserDataIsToldByTheBytesLeftInTheNalUnit) {
    Walk walk;
    EXPECT_EQ(walk.Next(Prefix(Joined({4, 1}, kActiveFormat))), TRUE);
    EXPECT_EQ(walk.Result(), (Outcome{4, 1, 2, 3, SUID_AFD, TRUE}));
}

TEST(SeiMessageScan, NullPointersAreReported) {
    const Bytes nal = Prefix({1, 1, 0x31});
    const char *const names[] = {"pBuffer",           "pPayloadOffset", "pNALTypeOffset",
                                 "pSEIMessageHeader", "penSUID",        "pbMoreSEIMessages"};
    for (int missing = 0; missing < 6; missing++) {
        SCOPED_TRACE(names[missing]);
        const TraceCapture trace;
        Walk walk;
        const auto unless = [missing](int position, auto *pointer) {
            return position == missing ? nullptr : pointer;
        };
        EXPECT_EQ(
            H265Lib_DetermineSEIType(unless(0, nal.data()), static_cast<int>(nal.size()),
                                     unless(1, &walk.payload_offset), unless(2, &walk.nal_type_offset),
                                     unless(3, &walk.header), unless(4, &walk.suid), unless(5, &walk.more)),
            FALSE);
        EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf(std::string(names[missing]) + " != NULL")));
        EXPECT_EQ(trace.messages().size(), 1u);
        EXPECT_EQ(walk.more, missing == 5 ? 2 : FALSE);
        EXPECT_EQ(walk.suid, kUntouched);
    }
}

TEST(SeiMessageScan, LengthsBelowANalUnitAreRefused) {
    const Bytes nal = Prefix({1, 1, 0x31});
    for (const int length : {0, 1, 2, 3, -1, INT_MIN}) {
        const TraceCapture trace(7);
        Walk walk;
        EXPECT_EQ(H265Lib_DetermineSEIType(nal.data(), length, &walk.payload_offset, &walk.nal_type_offset,
                                           &walk.header, &walk.suid, &walk.more),
                  FALSE);
        EXPECT_EQ(walk.Result(), kNothing);
        EXPECT_THAT(trace.Assertions(),
                    ElementsAre(AssertionOf("BufferLen >= 7"), AssertionOf("buffer_len >= 4")));
        EXPECT_THAT(trace.Errors(), IsEmpty());
    }
}

// Three messages cut at every byte, without a byte that could be trailing bits: a message is found when all
// of it is there.
TEST(SeiMessageScan, NalUnitCutAtEveryByte) {
    const Bytes whole = Prefix({1, 2, 0x31, 0x11, 136, 3, 0x61, 0x11, 0x11, 5, 2, 0x11, 0x11});
    const size_t header = 5;
    const size_t ends[] = {4, 9, 13};
    for (size_t length = header; length < whole.size(); length++) {
        SCOPED_TRACE(length);
        const Bytes nal(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        Walk walk;
        for (const size_t end : ends) {
            const bool complete = header + end <= length;
            ASSERT_EQ(walk.Next(nal), complete);
            if (!complete)
                break;
            EXPECT_EQ(walk.payload_offset, static_cast<int>(end));
            EXPECT_EQ(walk.more, length - header - end > 2);
            if (!walk.more)
                break;
        }
    }
}

// A NAL unit of this length whose one message fills it.
Bytes NalUnitOf(size_t length) {
    const size_t size = length - 5 - 5 - 1;  // header, message header with three bytes FF, trailing bits
    Bytes nal = {0, 0, 1, 0x4E, 1, 5, static_cast<unsigned char>(size - 3 * 255), 0xFF, 0xFF, 0xFF};
    nal.resize(length - 1, 0x11);
    nal.push_back(0x80);
    return nal;
}

TEST(SeiMessageScan, UpTo1024BytesNeedNoHeap) {
    for (size_t length = 1024; length <= 1025; length++) {
        const FailingAllocations allocations(2);
        Walk walk;
        EXPECT_EQ(walk.Next(NalUnitOf(length)), TRUE);
        const UINT size = static_cast<UINT>(length) - 11;
        EXPECT_EQ(walk.Result(), (Outcome{5, size, 5, static_cast<int>(size) + 5, SUID_UNKNOWN, FALSE}));
        EXPECT_EQ(FailingAllocations::Calls(), length > 1024 ? 1 : 0);
    }
}

TEST(SeiMessageScan, FailedAllocationIsReported) {
    const ControlledClock clock(FreshTime());
    const FailingAllocations allocations(1);
    const TraceCapture trace(5);
    Walk walk;
    EXPECT_EQ(walk.Next(NalUnitOf(1025)), FALSE);
    EXPECT_EQ(walk.Result(), (Outcome{0, 0, 0, 0, kUntouched, FALSE}));
    EXPECT_THAT(trace.Assertions(), ElementsAre(AssertionOf("pSEISodbBuffer = calloc(1, BufferLen)")));
    EXPECT_EQ(trace.messages().size(), 1u);
    const Bytes nal = NalUnitOf(1025);
    InSilence([&] {
        Walk silent;
        const FailingAllocations first(1);
        EXPECT_EQ(H265Lib_DetermineSEIType(nal.data(), 1025, &silent.payload_offset, &silent.nal_type_offset,
                                           &silent.header, &silent.suid, &silent.more),
                  FALSE);
    });
}

// The two messages that are limited in rate share the time at which one of them was last issued.
TEST(SeiMessageScan, RateLimitsShareOneTime) {
    enum Site { kAllocation, kReserved };
    const struct {
        int seconds;  // since the first
        Site site;
        int level;
        bool issued;
    } steps[] = {{0, kReserved, 5, true},     {4, kReserved, 5, false},    {5, kReserved, 5, true},
                 {10, kAllocation, 5, false}, {11, kAllocation, 5, true},  {15, kReserved, 5, false},
                 {16, kReserved, 5, true},    {21, kAllocation, 5, false}, {22, kAllocation, 4, false},
                 {27, kAllocation, 5, false}, {28, kAllocation, 5, true},  {33, kReserved, 3, false},
                 {37, kReserved, 5, false},   {38, kReserved, 5, true}};
    const std::time_t start = FreshTime();
    ControlledClock clock(start);
    for (const auto &[seconds, site, level, issued] : steps) {
        SCOPED_TRACE(seconds);
        clock.Set(start + seconds);
        const TraceCapture trace(level);
        Walk walk;
        if (site == kReserved) {
            EXPECT_EQ(walk.Next(Prefix({203, 0})), FALSE);
            EXPECT_EQ(trace.Texts(4), std::vector<std::string>(issued, Reserved(203, 202)));
        } else {
            EXPECT_EQ(walk.Next(OnHeap(Prefix({1, 1, 0x31}))), TRUE);
            EXPECT_EQ(trace.Texts(5),
                      std::vector<std::string>(
                          issued, "We needed to allocate a SODB buffer of length:1025 to deencapsulate.\n"));
        }
    }
}

}  // namespace
}  // namespace test
