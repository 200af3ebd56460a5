#include "sei_building.h"

#include <cstring>
#include <memory>

#include "h265.h"
#include "operation.h"

namespace bench {

namespace {

constexpr int kCapacity = 256;

struct Captions {
    std::vector<vanc_t> entries = std::vector<vanc_t>(20);

    Captions() {
        for (vanc_t &entry : entries) {
            entry.suid = SUID_CLOSED_CAPTION;
            entry.vanc_data.caption = {1, 0, 0x94, 0x20};
        }
    }
    int Build(unsigned char *buffer) const {
        const int count = static_cast<int>(entries.size());
        return H265Lib_format_sei_cc_nal(buffer, kCapacity, entries.data(),
                                         count * static_cast<int>(sizeof(vanc_t)), count, nullptr);
    }
};

struct ActiveFormat {
    vanc_t entry{};

    ActiveFormat() {
        entry.suid = SUID_AFD;
        entry.vanc_data.afd_data = {1, 8};
    }
    int Build(unsigned char *buffer) const {
        return H265Lib_format_sei_afd_nal(buffer, kCapacity, &entry, sizeof entry);
    }
};

struct TimeCode {
    std::shared_ptr<sps_h265_t> sps = std::make_shared<sps_h265_t>();
    vitc_t vitc{};
    SEI_time_code_info_t info{};

    TimeCode() {
        sps->vui.vui_num_units_in_tick = 200;  // GStreamer writes time offsets of up to eight bits
        vitc.HourTens = 1;
        vitc.FrameUnits = 7;
        info.FrameRate = 29970;
        info.enTimeSource = EMBEDDED_TIME_CODE;
        info.pParsedSps = sps.get();
    }
    int Build(unsigned char *buffer) {
        return H265Lib_format_sei_time_code_nal(buffer, kCapacity, &vitc, &info);
    }
};

struct PictureTiming {
    std::shared_ptr<vui_h265_t> vui = std::make_shared<vui_h265_t>();
    std::shared_ptr<sei_h265_pic_timing_t> timing = std::make_shared<sei_h265_pic_timing_t>();

    PictureTiming() {
        vui->nal_hrd.nal_hrd_parameters_present_flag = 1;
        vui->nal_hrd.au_cpb_removal_delay_length_minus1 = 23;
        vui->nal_hrd.dpb_output_delay_length_minus1 = 4;
    }
    int Build(unsigned char *buffer) const {
        UINT length = kCapacity;
        return H265Lib_format_sei_pictiming_nal(buffer, &length, vui.get(), timing.get())
                   ? static_cast<int>(length)
                   : 0;
    }
};

struct PrecisionTime {
    INT64 time = 1'700'000'000'000'000;

    int Build(unsigned char *buffer) const {
        return H265Lib_formatMISPMicroSecondTimeSEI(buffer, kCapacity, &time, 0x9F);
    }
};

template <typename Message>
BuiltSei Built(const char *name) {
    unsigned char buffer[kCapacity];
    const int length = Message().Build(buffer);
    return {name, Bytes(buffer, buffer + length)};
}

template <typename Message>
void AddBuild(const char *name) {
    Add(std::string(name) + "/ours", [] {
        return [message = Message()]() mutable {
            unsigned char buffer[kCapacity];
            return message.Build(buffer) > 5;
        };
    });
}

constexpr char kTimeCode[] = "sei_build/time_code";
constexpr char kCaptions[] = "sei_build/captions";
constexpr char kActiveFormat[] = "sei_build/active_format";

}  // namespace

std::vector<BuiltSei> BuiltSeis() {
    return {Built<TimeCode>(kTimeCode), Built<Captions>(kCaptions), Built<ActiveFormat>(kActiveFormat)};
}

void AddSeiBuilding() {
    AddBuild<TimeCode>(kTimeCode);
    AddBuild<Captions>(kCaptions);
    AddBuild<ActiveFormat>(kActiveFormat);
    AddBuild<PictureTiming>("sei_build/picture_timing");
    AddBuild<PrecisionTime>("sei_build/precision_time");
    for (const BuiltSei &built : BuiltSeis()) {
        Add(built.name + "/memcpy", [nal = built.nal] {
            return [nal] {
                unsigned char buffer[kCapacity];
                size_t length = nal.size();
                benchmark::DoNotOptimize(length);  // not a constant
                std::memcpy(buffer, nal.data(), length);
                benchmark::DoNotOptimize(buffer);
                return true;
            };
        });
    }
}

}  // namespace bench
