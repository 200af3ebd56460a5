#include "inspect.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "colours.h"
#include "file_walk.h"
#include "json/json.h"
#include "nal_unit.h"
#include "output.h"
#include "reading/unit_reader.h"
#include "summary.h"

namespace h265tool {
namespace {

// Prints the NAL units of a stream. Picture timing messages depend on the SPS that the slices behind them
// refer to, and the SPS and PPS themselves may come in between: lines are held back from such a message to
// the first slice of its access unit.
class LinePrinter {
 public:
    explicit LinePrinter(const InspectOptions &options)
        : json_(options.json), human_(options.human), colours_(ColoursFor(options.color)) {}

    void Take(const NalUnit &unit) {
        UnitContent content = reader_.Read(unit);
        if (!held_.empty() && EndsWaiting(unit))
            Release(std::get_if<Slice>(&content));
        auto *const sei = std::get_if<Sei>(&content);
        if (sei != nullptr && sei->HasUnreadTiming())
            held_.push_back({{}, unit, std::move(*sei)});
        else if (held_.empty())
            output_.Line(Line(unit, content));
        else
            held_.push_back({Line(unit, content), {}, {}});
    }

    void Finish() {
        Release(nullptr);
        output_.Flush();
    }

    bool AllParsed() const { return all_parsed_; }

 private:
    // A line, or a SEI NAL unit that becomes one.
    struct Held {
        std::string line;
        NalUnit unit;
        Sei sei;
    };

    // The access unit has its slice, or will not have one; or no stream has so much in front of a slice.
    bool EndsWaiting(const NalUnit &unit) const {
        constexpr size_t kMostHeld = 1000;
        const std::optional<NalUnitHeader> header = unit.Header();
        if (held_.size() >= kMostHeld || !header.has_value())
            return held_.size() >= kMostHeld;
        return (IsVcl(header->nal_unit_type) && header->nuh_layer_id == 0) ||
               (header->nal_unit_type >= kAud && header->nal_unit_type <= kEob);
    }

    void Release(const Slice *slice) {
        for (Held &held : std::exchange(held_, {})) {
            if (held.line.empty()) {
                reader_.ReadPicTimings(slice, &held.sei);
                held.line = Line(held.unit, std::move(held.sei));
            }
            output_.Line(held.line);
        }
    }

    // Valid until the next line.
    const std::string &Line(const NalUnit &unit, const UnitContent &content) {
        if (IsBroken(content))
            all_parsed_ = false;
        line_.clear();
        if (json_)  // bytes that are no UTF-8 do not occur, but a line must not be lost to them
            line_ = ToJson(unit, content).dump(-1, ' ', false, Json::error_handler_t::replace);
        else
            AppendSummaryLine(unit, content, colours_, human_, &line_);
        return line_;
    }

    bool json_;
    bool human_;
    const Colours &colours_;
    bool all_parsed_ = true;
    UnitReader reader_;
    Output output_;
    std::string line_;
    std::vector<Held> held_;
};

}  // namespace

ExitStatus Inspect(const InspectOptions &options) {
    LinePrinter printer(options);
    const ExitStatus status = WalkFile(
        options.file, [&](const NalUnit &unit) { printer.Take(unit); }, [&] { printer.Finish(); });
    return std::max(status, printer.AllParsed() ? kAllWell : kStreamError);
}

}  // namespace h265tool
