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

constexpr int kPrefix = 39;
constexpr int kSuffix = 40;
constexpr char kNone[] = "No active format description in the SEI NAL unit.\n";

// The messages of these payloads, all of registered user data.
Bytes Registered(const std::vector<Bytes> &payloads) {
    Bytes messages;
    for (const Bytes &payload : payloads) {
        messages.insert(messages.end(), {4, static_cast<unsigned char>(payload.size())});
        messages.insert(messages.end(), payload.begin(), payload.end());
    }
    return messages;
}

// Country and provider code, the identifier, and what follows it.
Bytes Identified(const std::string &identifier, const Bytes &data) {
    Bytes payload = {0xB5, 0, 0x31};
    payload.insert(payload.end(), identifier.begin(), identifier.end());
    payload.insert(payload.end(), data.begin(), data.end());
    return payload;
}

class ActiveFormat : public testing::Test {
 protected:
    // Parses an exactly sized copy. A failure has to leave the record alone and to be reported once; its text
    // is returned, and an empty one on success.
    std::string Parse(const Bytes &nal) {
        Bytes exact(nal);
        const Bytes prefill(sizeof afd_, 0xA5);
        std::memcpy(&afd_, prefill.data(), sizeof afd_);
        const TraceCapture trace;
        const BOOL parsed = parse_sei_afd_nal(exact.data(), static_cast<int>(exact.size()), &afd_);
        EXPECT_EQ(trace.messages().size(), parsed ? 0u : 1u);
        if (parsed || trace.messages().empty())
            return {};
        InSilence([&] {
            EXPECT_EQ(parse_sei_afd_nal(exact.data(), static_cast<int>(exact.size()), &afd_), FALSE);
        });
        EXPECT_EQ(std::memcmp(&afd_, prefill.data(), sizeof afd_), 0);
        const TracedMessage &message = trace.messages()[0];
        EXPECT_EQ(message.channel + ' ' + std::to_string(message.level) + ' ' + message.function,
                  "H264LIB 3 parse_sei_afd_nal");
        return message.text;
    }

    std::string ParseMessages(Bytes messages) {
        messages.push_back(0x80);
        return Parse(NalUnit(kPrefix, messages));
    }

    SEI_afd_t afd_;
};

TEST_F(ActiveFormat, TheWholeRecordIsWritten) {
    for (const int nal_unit_type : {kPrefix, kSuffix}) {
        ASSERT_EQ(Parse(NalUnit(nal_unit_type, {4, 9, 0xB5, 0, 0x31, 'D', 'T', 'G', '1', 0x41, 0xF8, 0x80})),
                  "");
        EXPECT_EQ(afd_.itu_t_t35_country_code, 0xB5);
        EXPECT_EQ(afd_.itu_t_t35_provider_code, 0x0031);
        EXPECT_EQ(afd_.user_identifier, 0x44544731u);
        EXPECT_EQ(afd_.afd_data.active_format_flag, 1);
        EXPECT_EQ(afd_.afd_data.active_format, 8);
        EXPECT_EQ(afd_.header.payload_type, 4);
        EXPECT_EQ(afd_.header.payload_size, 9u);
        EXPECT_EQ(afd_.header.payload_index, 2u);
    }
}

TEST_F(ActiveFormat, H264NalUnit) {
    ASSERT_EQ(Parse({0, 0, 1, 6, 4, 9, 0xB5, 0, 0x31, 'D', 'T', 'G', '1', 0x41, 0xFA, 0x80}), "");
    EXPECT_EQ(afd_.afd_data.active_format, 10);
    EXPECT_EQ(afd_.header.payload_index, 2u);
}

TEST_F(ActiveFormat, EveryCodeAndOnlyTheFlagsOwnBit) {
    for (unsigned int code = 0; code < 16; code++) {
        ASSERT_EQ(ParseMessages(Registered({Identified("DTG1", {0x41, static_cast<unsigned char>(code)})})),
                  "");
        EXPECT_EQ(afd_.afd_data.active_format, code);
        ASSERT_EQ(
            ParseMessages(Registered({Identified("DTG1", {0x40, static_cast<unsigned char>(0xF0 | code)})})),
            "");
        EXPECT_EQ(afd_.afd_data.active_format, code);
    }
    ASSERT_EQ(ParseMessages(Registered({Identified("DTG1", {0xBF, 0xF8})})), "");
    EXPECT_EQ(afd_.afd_data.active_format_flag, 0);
    EXPECT_EQ(afd_.afd_data.active_format, 0);
}

TEST_F(ActiveFormat, WithoutAFormat) {
    ASSERT_EQ(ParseMessages(Registered({Identified("DTG1", {0x01})})), "");
    EXPECT_EQ(afd_.afd_data.active_format_flag, 0);
    EXPECT_EQ(afd_.afd_data.active_format, 0);
    EXPECT_EQ(afd_.header.payload_size, 8u);
}

TEST_F(ActiveFormat, MessagesThatAreTooShort) {
    EXPECT_EQ(ParseMessages(Registered({Identified("DTG1", {})})), "cannot parse active_format_flag.\n");
    EXPECT_EQ(ParseMessages(Registered({Identified("DTG1", {0x41})})), "cannot parse active_format.\n");
    // bytes of the next message are not taken for missing ones
    const Bytes next = Identified("GA94", {3});
    EXPECT_EQ(ParseMessages(Registered({Identified("DTG1", {}), next})),
              "cannot parse active_format_flag.\n");
    EXPECT_EQ(ParseMessages(Registered({Identified("DTG1", {0x41}), next})), "cannot parse active_format.\n");
}

TEST_F(ActiveFormat, PayloadThatPointsPastTheDataBehindTheFormat) {
    Bytes message = Registered({Identified("DTG1", {0x41, 0xF8})});
    message[1]++;
    EXPECT_EQ(ParseMessages(message), "payload_size:10 runs past the NAL unit.\n");
    message.push_back(0x55);
    EXPECT_EQ(ParseMessages(message), "");
}

TEST_F(ActiveFormat, OtherRegisteredUserDataIsPassedOver) {
    const Bytes captions = Identified("GA94", {3, 0xC0, 0xFF, 0xFF});
    const Bytes unknown = Identified("DTG2", {0x41, 0xFF});
    const Bytes second = Identified("DTG1", {0x41, 0xFC});
    ASSERT_EQ(ParseMessages(Registered({captions,
                                        {0xB5, 0, 0x31, 'D', 'T', 'G'},
                                        {},
                                        unknown,
                                        Identified("DTG1", {0x41, 0xF9}),
                                        second})),
              "");
    EXPECT_EQ(afd_.afd_data.active_format, 9);
    EXPECT_EQ(afd_.header.payload_index, 13u + 8 + 2 + 11 + 2);
    EXPECT_EQ(ParseMessages(Registered({captions, unknown})), kNone);
    EXPECT_EQ(ParseMessages({5, 9, 0xB5, 0, 0x31, 'D', 'T', 'G', '1', 0x41, 0xF8}), kNone);
}

TEST_F(ActiveFormat, CodesInFrontOfTheIdentifierAreKeptAsTheyAre) {
    ASSERT_EQ(ParseMessages(Registered({{0x26, 0xFE, 0xDC, 'D', 'T', 'G', '1', 1}})), "");
    EXPECT_EQ(afd_.itu_t_t35_country_code, 0x26);
    EXPECT_EQ(afd_.itu_t_t35_provider_code, 0xFEDC);
}

TEST_F(ActiveFormat, NalUnitCutAtEveryByte) {
    const Bytes whole = {0, 0, 0, 1, 0x4E, 1, 4, 9, 0xB5, 0, 0x31, 'D', 'T', 'G', '1', 0x41, 0xF8, 0x80};
    const size_t identified = 15;
    const size_t complete = 17;
    for (size_t length = 1; length <= whole.size(); length++) {
        SCOPED_TRACE(length);
        const std::string error =
            Parse(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        if (length < 6)
            EXPECT_THAT(error, testing::EndsWith(" is no SEI NAL unit.\n"));
        else if (length < identified)
            EXPECT_EQ(error, kNone);
        else if (length == identified)
            EXPECT_EQ(error, "cannot parse active_format_flag.\n");
        else
            EXPECT_EQ(error, length < complete ? "cannot parse active_format.\n" : "");
    }
}

TEST_F(ActiveFormat, NullPointersAreReported) {
    unsigned char nal[] = {0, 0, 1, 0x4E, 1, 0x80};
    const TraceCapture trace;
    EXPECT_EQ(parse_sei_afd_nal(nullptr, 6, &afd_), FALSE);
    EXPECT_EQ(parse_sei_afd_nal(nal, 6, nullptr), FALSE);
    EXPECT_THAT(trace.Assertions(),
                ElementsAre(AssertionOf("buffer != NULL"), AssertionOf("sei_afd != NULL")));
    EXPECT_EQ(trace.messages().size(), 2u);
}

TEST_F(ActiveFormat, RealUnits) {
    for (const auto &[file, active_format, index] :
         {std::tuple("units/sei-afd.nal", 10, 2u), {"units/sei-multiple.nal", 8, 86u}}) {
        const std::vector<Bytes> nals = SampleNalUnits(file);
        ASSERT_EQ(nals.size(), 1u);
        ASSERT_EQ(Parse(nals[0]), "");
        EXPECT_EQ(afd_.afd_data.active_format, active_format);
        EXPECT_EQ(afd_.header.payload_index, index);
    }
    EXPECT_EQ(Parse(SampleNalUnits("units/sei-captions.nal").at(0)), kNone);
}

}  // namespace
}  // namespace test
