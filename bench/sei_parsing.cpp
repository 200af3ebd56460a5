// Walking SEI NAL units, and parsing what is found.

#include <memory>

#include "h265.h"
#include "operation.h"
#include "samples.h"

namespace bench {

namespace {

// Walks all messages, as a caller does. Returns whether there are some and each visit went well.
template <typename Visit>
bool Walk(const Bytes &nal, Visit visit) {
    int offset = 0;
    int nal_type_offset = 0;
    SEI_message_t header{};
    int kind = 0;
    BOOL more = TRUE;
    while (more) {
        if (!H265Lib_DetermineSEIType(nal.data(), static_cast<int>(nal.size()), &offset, &nal_type_offset,
                                      &header, &kind, &more) ||
            !visit(header, kind))
            return false;
    }
    return true;
}

// Everything that a caller needs who wants all three.
struct Receiver {
    sps_h265_t sps{};
    sei_h265_pic_timing_t picture_timing{};
    sei_h265_time_code_t time_code{};
    SEI_cc_t captions{};

    BOOL Take(Bytes &nal, const SEI_message_t &header, int kind) {
        const int length = static_cast<int>(nal.size());
        switch (kind) {
            case SUID_PICTURE_TIMING:
                return H265Lib_Parse_sei_pictiming_nal(nal.data(), length, &header, &sps.vui,
                                                       &picture_timing);
            case SUID_TIME_CODE:
                return H265Lib_Parse_sei_timecode_nal(nal.data(), length, &header, &time_code);
            case SUID_CLOSED_CAPTION:
                return H265Lib_Parse_sei_cc_nal(nal.data(), length, &captions);
            default:
                return FALSE;
        }
    }
};

void AddWalk(const char *name, const char *sample) {
    Add(name, [sample] {
        return
            [nal = ReadSample(sample)] { return Walk(nal, [](const SEI_message_t &, int) { return true; }); };
    });
}

}  // namespace

void AddSeiParsing() {
    AddWalk("sei_walk/five_messages/ours", "units/sei-multiple.nal");
    AddWalk("sei_walk/one_message/ours", "units/sei-captions.nal");
    for (const NalCase &message : SeiMessages()) {
        Add(message.name + "/ours", [&message] {
            const auto receiver = std::make_shared<Receiver>();
            const Bytes &sps_nal = message.parameter_sets[1];
            H265Lib_Parse_sps_nal(sps_nal.data(), sps_nal.size(), &receiver->sps);
            return [nal = message.nal, receiver]() mutable {
                return Walk(nal, [&](const SEI_message_t &header, int kind) {
                    return receiver->Take(nal, header, kind) != FALSE;
                });
            };
        });
    }
}

}  // namespace bench
