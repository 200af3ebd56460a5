// How the syntax of SEI messages depends on the VUI.

#ifndef H265TOOL_EDIT_SEI_SYNTAX_H
#define H265TOOL_EDIT_SEI_SYNTAX_H

#include <cstdint>
#include <optional>
#include <string>

#include "h265.h"

namespace h265tool {

// The element of the VUI by which messages of this type would be read differently with the second SPS: those
// of a stream, written for the first, would not be understood any more. None when there is no such element.
std::optional<std::string> ElementThatChangesSyntax(uint64_t payload_type, const sps_h265_t &before,
                                                    const sps_h265_t &after);

}  // namespace h265tool

#endif
