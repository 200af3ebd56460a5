// Takes a file apart into NAL units, for the verbs that read one stream.

#ifndef H265TOOL_FILE_WALK_H
#define H265TOOL_FILE_WALK_H

#include <cstdint>
#include <functional>
#include <string>

#include "annexb_scanner.h"
#include "exit_status.h"
#include "nal_unit.h"

namespace h265tool {

// How messages call the file, "-" being standard input.
std::string FileName(const std::string &file);

// Hands the file to `sink`; returns its size. Throws std::system_error and NotAByteStream.
uint64_t ScanFile(const std::string &file, NalUnitSink *sink);

// Hands each NAL unit of the file to `take`, then calls `end`: also when the file turns out to be bad, before
// that is reported on standard error. Returns kFailure when the file cannot be read, kStreamError when it is
// no byte stream, else kAllWell. What `take` and `end` throw goes through.
ExitStatus WalkFile(const std::string &file, const std::function<void(const NalUnit &)> &take,
                    const std::function<void()> &end);

}  // namespace h265tool

#endif
