#include "entry_points/call.h"

namespace test {

std::string NameOf(const EntryPoint &entry_point) {
    return std::string(entry_point.function) + entry_point.variant;
}

void PrintTo(const EntryPoint &entry_point, std::ostream *out) {
    *out << NameOf(entry_point);
}

std::vector<EntryPoint> EntryPoints() {
    std::vector<EntryPoint> all;
    for (const auto &area : {TraceEntryPoints(), BitReadingEntryPoints(), BitWritingEntryPoints(),
                             FramingEntryPoints(), ParameterSetEntryPoints(), RewritingEntryPoints(),
                             SeiReadingEntryPoints(), SeiBuildingEntryPoints()})
        all.insert(all.end(), area.begin(), area.end());
    return all;
}

}  // namespace test
