#include <gmock/gmock.h>

#include <cstring>

#include "h264.h"
#include "support/nal_unit.h"
#include "support/samples.h"
#include "support/silence.h"
#include "support/trace_capture.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;

constexpr int kPrefix = 39;
constexpr int kSuffix = 40;
constexpr char kNone[] = "No closed caption message in the SEI NAL unit.\n";
constexpr char kPacket[] = "cannot parse cc_data_pkt.\n";

constexpr size_t kCaptionsBegin = 12;  // in a message: the first cc_data_pkt

// A message of captions, in which odd constructs have no data. Those from 8 on come without marker bits, at
// which nobody looks: emulation prevention is needed then.
Bytes Captions(size_t cc_count, unsigned char type_code = 3) {
    const auto byte = [](size_t value) { return static_cast<unsigned char>(value); };
    Bytes message = {4,         byte(11 + 3 * cc_count), 0xB5, 0, 0x31, 'G', 'A', '9', '4',
                     type_code, byte(0xC0 | cc_count),   0xFF};
    for (size_t i = 0; i < cc_count; i++)
        for (const size_t value : {(i < 8 ? 0xF8U : 0U) | i % 8, i % 2 ? 0 : i, i % 2 ? 0 : size_t{5}})
            message.push_back(byte(value));
    message.push_back(0xFF);
    return message;
}

Bytes Joined(const std::vector<Bytes> &messages) {
    Bytes rbsp;
    for (const Bytes &message : messages)
        rbsp.insert(rbsp.end(), message.begin(), message.end());
    return rbsp;
}

class ClosedCaptions : public testing::Test {
 protected:
    // Parses an exactly sized copy. A failure has to leave the record alone and to be reported once; its text
    // is returned, and an empty one on success.
    std::string Parse(const Bytes &nal) {
        Bytes exact(nal);
        const Bytes prefill(sizeof captions_, 0xA5);
        std::memcpy(&captions_, prefill.data(), sizeof captions_);
        const TraceCapture trace;
        const BOOL parsed = parse_sei_cc_nal(exact.data(), static_cast<int>(exact.size()), &captions_);
        EXPECT_EQ(trace.messages().size(), parsed ? 0u : 1u);
        if (parsed || trace.messages().empty())
            return {};
        InSilence([&] {
            EXPECT_EQ(parse_sei_cc_nal(exact.data(), static_cast<int>(exact.size()), &captions_), FALSE);
        });
        EXPECT_EQ(std::memcmp(&captions_, prefill.data(), sizeof captions_), 0);
        const TracedMessage &message = trace.messages()[0];
        EXPECT_EQ(message.channel + ' ' + std::to_string(message.level) + ' ' + message.function,
                  "H264LIB 3 parse_sei_cc_nal");
        return message.text;
    }

    std::string ParseMessages(const std::vector<Bytes> &messages) {
        return Parse(NalUnit(kPrefix, Joined({Joined(messages), {0x80}})));
    }

    // What Captions(cc_count) has; the entries behind it are 0.
    void ExpectCaptions(size_t cc_count) const {
        EXPECT_EQ(captions_.cc_data.cc_count, cc_count);
        for (size_t i = 0; i < H265_SEI_CAPTIONS; i++) {
            SCOPED_TRACE(i);
            const caption_t &caption = captions_.cc_bytes[i];
            const bool used = i < cc_count;
            EXPECT_EQ(caption.flag, used ? i / 4 % 2 : 0);
            EXPECT_EQ(caption.type, used ? i % 4 : 0);
            EXPECT_EQ(caption.data1, used && i % 2 == 0 ? i : 0);
            EXPECT_EQ(caption.data2, used && i % 2 == 0 ? 5 : 0);
        }
    }

    SEI_cc_t captions_;
};

TEST_F(ClosedCaptions, TheWholeRecordIsWritten) {
    for (const int nal_unit_type : {kPrefix, kSuffix}) {
        ASSERT_EQ(Parse(NalUnit(nal_unit_type, {4,    17,   0xB5, 0,    0x31, 'G',  'A',  '9',  '4',  3,
                                                0x82, 0xFF, 0xFC, 0x94, 0x20, 0xF9, 0x80, 0x81, 0xFE, 0x80})),
                  "");
        EXPECT_EQ(captions_.itu_t_t35_country_code, 0xB5);
        EXPECT_EQ(captions_.itu_t_t35_provider_code, 0x0031);
        EXPECT_EQ(captions_.user_identifier, 0x47413934u);
        EXPECT_EQ(captions_.user_data_type_code, 3);
        EXPECT_EQ(captions_.cc_data.process_cc_data_flag, 0);
        EXPECT_EQ(captions_.cc_data.cc_count, 2);
        EXPECT_EQ(captions_.cc_data.marker_bits, 0xFE) << "as coded";
        const auto is = [](const caption_t &caption, int flag, int type, int data1, int data2) {
            return caption.flag == flag && caption.type == type && caption.data1 == data1 &&
                   caption.data2 == data2;
        };
        EXPECT_TRUE(is(captions_.cc_bytes[0], 1, 0, 0x94, 0x20));
        EXPECT_TRUE(is(captions_.cc_bytes[1], 0, 1, 0x80, 0x81));
        EXPECT_EQ(captions_.header.payload_type, 4);
        EXPECT_EQ(captions_.header.payload_size, 17u);
        EXPECT_EQ(captions_.header.payload_index, 2u);
    }
}

TEST_F(ClosedCaptions, EveryCountWithEmulationPrevention) {
    for (size_t cc_count = 0; cc_count <= 31; cc_count++) {
        ASSERT_EQ(ParseMessages({Captions(cc_count)}), "");
        ExpectCaptions(cc_count);
        EXPECT_EQ(captions_.cc_data.process_cc_data_flag, 1);
        EXPECT_EQ(captions_.cc_data.marker_bits, 0xFF);
    }
}

TEST_F(ClosedCaptions, PayloadThatEndsInZerosOrInAnEmulationPreventionByte) {
    Bytes message = Captions(1);
    message.end()[-4] = 0xFC;
    for (const Bytes &end :
         {Bytes{0, 0, 0}, Bytes{0, 0, 3}, Bytes{0, 0, 1}, Bytes{1, 0, 0}, Bytes{0, 0, 0x80}}) {
        std::copy(end.begin(), end.end(), message.end() - 3);
        ASSERT_EQ(ParseMessages({message}), "");
        EXPECT_EQ(captions_.cc_bytes[0].data1, end[0]);
        EXPECT_EQ(captions_.cc_bytes[0].data2, end[1]);
        EXPECT_EQ(captions_.cc_data.marker_bits, end[2]);
    }
}

TEST_F(ClosedCaptions, H264NalUnit) {
    for (size_t start_code_length = 3; start_code_length <= 4; start_code_length++) {
        Bytes nal(start_code_length - 1, 0);
        const Bytes payload = Encapsulated(Joined({{1, 1, 0x31}, Captions(31), {0x80}}));
        nal.insert(nal.end(), {1, 6});
        nal.insert(nal.end(), payload.begin(), payload.end());
        ASSERT_EQ(Parse(nal), "");
        ExpectCaptions(31);
        EXPECT_EQ(captions_.header.payload_index, 5u);
    }
}

TEST_F(ClosedCaptions, ConstructsThatDoNotFitTheMessage) {
    Bytes message = Captions(20);
    const Bytes next = Captions(3);  // its bytes are not taken for the missing ones
    const auto expect = [&](size_t size, const std::string &error) {
        message.resize(2 + size);
        message[1] = static_cast<unsigned char>(size);
        EXPECT_EQ(ParseMessages({message, next}), error) << size;
    };
    expect(70, "cannot parse marker_bits.\n");
    for (size_t size = 69; size >= 10; size--)
        expect(size, kPacket);
    expect(9, "cannot parse em_data.\n");
    expect(8, "cannot parse cc_count.\n");
}

TEST_F(ClosedCaptions, PayloadThatPointsPastTheDataBehindTheMarkerBits) {
    Bytes message = Captions(2);
    message[1]++;
    EXPECT_EQ(ParseMessages({message}), "payload_size:18 runs past the NAL unit.\n");
    message.push_back(0x55);
    EXPECT_EQ(ParseMessages({message}), "");
    ExpectCaptions(2);
}

TEST_F(ClosedCaptions, OtherUserDataIsPassedOver) {
    const Bytes bar_data = Captions(2, 6);
    const Bytes format = {4, 9, 0xB5, 0, 0x31, 'D', 'T', 'G', '1', 0x41, 0xF8};
    const Bytes no_type_code = {4, 7, 0xB5, 0, 0x31, 'G', 'A', '9', '4'};
    const Bytes bare = {4, 0};
    ASSERT_EQ(ParseMessages({bar_data, format, no_type_code, bare, Captions(7), Captions(9)}), "");
    ExpectCaptions(7);
    EXPECT_EQ(captions_.header.payload_index, bar_data.size() + format.size() + 9 + 2 + 2);
    EXPECT_EQ(ParseMessages({bar_data, format, no_type_code, bare}), kNone);
    Bytes unregistered = Captions(7);
    unregistered[0] = 5;
    EXPECT_EQ(ParseMessages({unregistered}), kNone);
}

TEST_F(ClosedCaptions, NalUnitCutAtEveryByte) {
    const Bytes message = Captions(31);
    const Bytes whole = NalUnit(kPrefix, Joined({message, {0x80}}), 3);
    // where each byte of the message stands in the NAL unit
    std::vector<size_t> ends;
    for (size_t n = 1; n <= message.size(); n++)
        ends.push_back(
            5 +
            Encapsulated(Bytes(message.begin(), message.begin() + static_cast<std::ptrdiff_t>(n))).size());
    ASSERT_GT(ends.back(), 5 + message.size()) << "needs emulation prevention";
    for (size_t length = 1; length < whole.size(); length++) {
        SCOPED_TRACE(length);
        const std::string error =
            Parse(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        if (length < 5)
            EXPECT_THAT(error, EndsWith("is no SEI NAL unit.\n"));
        else if (length < ends[9])
            EXPECT_EQ(error, kNone);
        else if (length < ends[10])
            EXPECT_EQ(error, "cannot parse cc_count.\n");
        else if (length < ends[11])
            EXPECT_EQ(error, "cannot parse em_data.\n");
        else if (length < ends[kCaptionsBegin + 3 * 31 - 1])
            EXPECT_EQ(error, kPacket);
        else if (length < ends.back())
            EXPECT_EQ(error, "cannot parse marker_bits.\n");
        else
            EXPECT_EQ(error, "");
    }
}

TEST_F(ClosedCaptions, NullPointersAreReported) {
    unsigned char nal[] = {0, 0, 1, 0x4E, 1, 0x80};
    const TraceCapture trace;
    EXPECT_EQ(parse_sei_cc_nal(nullptr, 6, &captions_), FALSE);
    EXPECT_EQ(parse_sei_cc_nal(nal, 6, nullptr), FALSE);
    EXPECT_THAT(trace.Assertions(),
                ElementsAre(AssertionOf("buffer != NULL"), AssertionOf("sei_cc != NULL")));
    EXPECT_EQ(trace.messages().size(), 2u);
}

TEST_F(ClosedCaptions, RealUnits) {
    for (const auto &[file, index] :
         {std::pair("units/sei-captions.nal", 2u), {"units/sei-multiple.nal", 13u}}) {
        const std::vector<Bytes> nals = SampleNalUnits(file);
        ASSERT_EQ(nals.size(), 1u);
        ASSERT_EQ(Parse(nals[0]), "");
        EXPECT_EQ(captions_.cc_data.cc_count, 20);
        EXPECT_EQ(captions_.cc_bytes[0].data1, 0x94);
        EXPECT_EQ(captions_.cc_bytes[0].data2, 0x20);
        EXPECT_EQ(captions_.header.payload_index, index);
    }
    EXPECT_EQ(Parse(SampleNalUnits("units/sei-afd.nal").at(0)), kNone);
}

}  // namespace
}  // namespace test
