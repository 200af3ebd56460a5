#include "extract.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>

#include "caption_text.h"
#include "carried_sei.h"
#include "file_walk.h"
#include "json/json.h"
#include "output.h"
#include "report.h"
#include "sei_summary.h"
#include "text.h"

namespace h265tool {
namespace {

// "captions: field 1 "HELLO", DTVCC |c602"; how many there are when all of them are padding.
std::string CaptionText(const SEI_cc_t &captions) {
    std::string text;
    const auto append = [&text](const char *label, const std::string &bytes, const char *quote) {
        if (!bytes.empty())
            text += Text(text.empty() ? "" : ", ", label, quote, bytes, quote);
    };
    append("field 1 ", Cea608Text(captions, kField1), "\"");
    append("field 2 ", Cea608Text(captions, kField2), "\"");
    append("DTVCC ", DtvccText(captions), "");
    return Text("captions: ", text.empty() ? "padding" : text);
}

template <typename Item>
Json ToJsonArray(const std::vector<Item> &items) {
    Json json = Json::array();
    for (const Item &item : items)
        json.push_back(ToJson(item));
    return json;
}

class PicturePrinter {
 public:
    explicit PicturePrinter(const ExtractOptions &options) : options_(options) {}

    void Take(const PictureWithSei &picture) {
        const std::string line = options_.json ? JsonLine(picture) : TextLine(picture);
        if (!line.empty())
            output_.Line(line);
    }
    void Flush() { output_.Flush(); }

 private:
    // Empty when the picture carries nothing of what is asked for.
    std::string TextLine(const PictureWithSei &picture) const {
        std::string carried;
        const auto append = [&carried](const std::string &text) {
            carried += Text(carried.empty() ? "" : "; ", text);
        };
        if (options_.captions) {
            for (const SEI_cc_t &captions : picture.carried.captions)
                append(CaptionText(captions));
        }
        if (options_.timecodes) {
            for (const sei_h265_time_code_t &time_code : picture.carried.time_codes)
                append(Text("time code: ", TimeCodeText(time_code)));
        }
        if (options_.afd) {
            for (const SEI_afd_t &afd : picture.carried.afd)
                append(Text("AFD: ", ActiveFormatText(afd)));
        }
        if (carried.empty())
            return carried;
        const std::string presentation =
            picture.presentation.has_value() ? std::to_string(*picture.presentation) : "-";
        std::array<char, 64> columns{};
        std::snprintf(columns.data(), columns.size(), "%8" PRIu64 " %8s  ", picture.number,
                      presentation.c_str());
        return columns.data() + carried;
    }

    std::string JsonLine(const PictureWithSei &picture) const {
        Json json;
        json["picture"] = picture.number;
        json["presentation"] = nullptr;
        if (picture.presentation.has_value())
            json["presentation"] = *picture.presentation;
        json["PicOrderCntVal"] = nullptr;
        if (picture.PicOrderCntVal.has_value())
            json["PicOrderCntVal"] = *picture.PicOrderCntVal;
        const size_t keys = json.size();
        if (options_.captions && !picture.carried.captions.empty())
            json["captions"] = ToJsonArray(picture.carried.captions);
        if (options_.timecodes && !picture.carried.time_codes.empty())
            json["time_code"] = ToJsonArray(picture.carried.time_codes);
        if (options_.afd && !picture.carried.afd.empty())
            json["afd"] = ToJsonArray(picture.carried.afd);
        return json.size() == keys ? std::string() : json.dump();
    }

    const ExtractOptions &options_;
    Output output_;
};

}  // namespace

ExitStatus Extract(const ExtractOptions &options) {
    PicturePrinter printer(options);
    uint64_t errors = 0;
    const auto report = [&](const NalUnit &unit, const std::string &reason) {
        if (errors++ == 0)
            Report(FileName(options.file), Text("NAL unit at ", unit.offset, ": ", reason));
    };
    CarriedSeiReader reader([&](const PictureWithSei &picture) { printer.Take(picture); }, report);
    const ExitStatus status = WalkFile(
        options.file, [&](const NalUnit &unit) { reader.Take(unit); },
        [&] {
            reader.Finish();
            printer.Flush();
        });
    if (errors > 1)
        Report(FileName(options.file), Text(errors, " NAL units could not be parsed; that was the first"));
    return std::max(status, errors > 0 ? kStreamError : kAllWell);
}

}  // namespace h265tool
