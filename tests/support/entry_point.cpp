#include "support/entry_point.h"

#include <gmock/gmock.h>

#include "support/interposed.h"
#include "support/nal_unit.h"
#include "support/silence.h"
#include "support/trace_capture.h"

namespace test {
namespace {

void ExpectErrors(const EntryPoint &entry_point, const Bytes &nal, std::vector<std::string> errors) {
    SCOPED_TRACE(errors.front());
    const auto expect_failure = [&] { EXPECT_EQ(entry_point.parse(nal.data(), nal.size()), FALSE); };
    if (nal.size() > 4)
        errors.insert(errors.end(), entry_point.added.begin(), entry_point.added.end());
    {
        const TraceCapture trace(3);
        expect_failure();
        EXPECT_EQ(trace.Errors(), errors);
    }
    InSilence(expect_failure);
}

}  // namespace

void ExpectRefusesMalformedFrames(const EntryPoint &entry_point) {
    for (const size_t length : {0U, 1U, 2U, 3U, 4U}) {
        Bytes nal = {0, 0, 0, 1};
        nal.resize(length);
        ExpectErrors(
            entry_point, nal,
            {entry_point.length_name + ":" + std::to_string(length) + " is too small. Malformed NAL.\n"});
    }

    for (const Bytes &nal : {Bytes{0, 0, 2, 0x40, 1, 0}, Bytes{0, 0, 0, 0, 1, 0x40, 1, 0},
                             Bytes{1, 0, 0, 1, 0x40, 1, 0}, Bytes{0, 1, 0, 1, 0x40, 1, 0}}) {
        char address[32];
        std::snprintf(address, sizeof address, "%p", static_cast<const void *>(nal.data()));
        ExpectErrors(entry_point, nal, {entry_point.no_start_code + " buffer:" + address + ".\n"});
    }

    const std::string no_sodb = "Failed to get SODB from RBSP. Output buffer is too small.\n";
    ExpectErrors(entry_point, {0, 0, 1, 0x40, 1}, {no_sodb});
    ExpectErrors(entry_point, {0, 0, 0, 1, 0x40}, {no_sodb});

    for (const size_t start_code_length : {3U, 4U}) {
        const ControlledClock clock(FreshTime());  // the first report is limited in rate
        Bytes nal(start_code_length + entry_point.longest + 1, 0xFF);
        std::fill_n(nal.begin(), start_code_length - 1, static_cast<unsigned char>(0));
        nal[start_code_length - 1] = 1;
        ExpectErrors(entry_point, nal,
                     {"Deencapsulation cannot be done as InputBufferLength:" +
                          std::to_string(entry_point.longest + 1) +
                          " is longer than OutputBufferLength:" + std::to_string(entry_point.longest) + ".\n",
                      no_sodb});
    }
}

}  // namespace test
