// What a NAL unit holds, in a few words.

#ifndef H265TOOL_SUMMARY_H
#define H265TOOL_SUMMARY_H

#include <string>

#include "colours.h"
#include "nal_unit.h"
#include "reading/unit_reader.h"

namespace h265tool {

// Appends a whole line about the NAL unit, without line end: offset, size, type, layer, temporal id and
// Summary. Colours are all that they change; `human_size` writes the size as HumanSize has it.
void AppendSummaryLine(const NalUnit &unit, const UnitContent &content, const Colours &colours,
                       bool human_size, std::string *line);

// "562 B  ", "2.4 KiB", "117 KiB": units below each other when the texts are set to the right.
std::string HumanSize(uint64_t bytes);

// Whether something in it could not be parsed.
bool IsBroken(const UnitContent &content);

// "" for the types that are shown by their names alone.
std::string Summary(const UnitContent &content);

}  // namespace h265tool

#endif
