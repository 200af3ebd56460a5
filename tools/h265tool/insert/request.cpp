#include "insert/request.h"

#include <charconv>
#include <sstream>
#include <string>

#include "insert/utc.h"
#include "pic_struct.h"
#include "text.h"
#include "text_file.h"
#include "usage_error.h"

namespace h265tool {
namespace {

TimeCode ReadTimeCode(const std::string &option, const std::string &text) {
    const std::optional<TimeCode> time_code = ParseTimeCode(text);
    if (!time_code.has_value())
        throw UsageError(option, Text("\"", text, "\" is no time code (HH:MM:SS:FF or HH:MM:SS;FF)"));
    return *time_code;
}

std::vector<CaptionPair> ReadCaptions(const std::string &path, const TimeCode &start) {
    std::istringstream text(FileText(path));
    try {
        return ReadScc(text, start);
    } catch (const SccError &error) {
        throw UsageError(path, error.what());
    }
}

std::vector<unsigned char> ReadPicStructs(const std::string &text) {
    std::vector<unsigned char> pic_structs;
    std::istringstream list(text + ",");
    for (std::string item; std::getline(list, item, ',');) {
        unsigned int value = 0;
        const char *const item_end = item.data() + item.size();
        const auto [end, error] = std::from_chars(item.data(), item_end, value);
        if (error != std::errc{} || end != item_end || value > kMaxPicStruct)
            throw UsageError("--pic-timing",
                             Text("\"", item, "\" is no pic_struct (0 to ", kMaxPicStruct, ")"));
        pic_structs.push_back(static_cast<unsigned char>(value));
    }
    return pic_structs;
}

}  // namespace

bool Request::Wants(SeiKind kind) const {
    switch (kind) {
        case SeiKind::kCaptions:
            return captions.has_value();
        case SeiKind::kAfd:
            return active_format.has_value();
        case SeiKind::kTimeCode:
            return time_code.has_value();
        case SeiKind::kPrecisionTime:
            return precision_time.has_value();
        case SeiKind::kPicTiming:
            return !pic_structs.empty();
        case SeiKind::kOther:
            break;
    }
    return false;
}

Request MakeRequest(const InsertOptions &options) {
    Request request;
    request.delimiters = options.aud;
    request.end_of_sequence = options.eos;
    request.replace = options.replace;
    request.active_format = options.afd;
    if (options.rate.has_value())
        request.rate = RateOption("--rate", *options.rate);
    if (options.time_code.has_value())
        request.time_code = ReadTimeCode("--timecode", *options.time_code);
    if (options.precision_time.has_value()) {
        request.precision_time = ParseUtc(*options.precision_time);
        if (!request.precision_time.has_value())
            throw UsageError("--precision-time", Text("\"", *options.precision_time,
                                                      "\" is no time such as 2026-01-31T12:00:00.5Z"));
    }
    if (options.pic_timing.has_value())
        request.pic_structs = ReadPicStructs(*options.pic_timing);
    if (options.captions.has_value())
        request.captions =
            ReadCaptions(*options.captions, ReadTimeCode("--captions-start", options.captions_start));
    return request;
}

}  // namespace h265tool
