// What a NAL unit holds, in a few words.

#ifndef H265TOOL_SUMMARY_H
#define H265TOOL_SUMMARY_H

#include <string>

#include "nal_unit.h"
#include "reading/unit_reader.h"

namespace h265tool {

// A whole line about the NAL unit: offset, size, type, layer, temporal id and Summary.
std::string SummaryLine(const NalUnit &unit, const UnitContent &content);

// "" for the types that are shown by their names alone.
std::string Summary(const UnitContent &content);

}  // namespace h265tool

#endif
