// HRD parameters from a JSON file.

#ifndef H265TOOL_EDIT_HRD_FIELDS_H
#define H265TOOL_EDIT_HRD_FIELDS_H

#include <string>

#include "h265.h"
#include "json/json.h"

namespace h265tool {

// The members of hrd_parameters( ) under the names, and in the shape, that inspect --json prints them. Those
// that the file leaves out stay as the stream has them.
struct HrdFields {
    std::string path;
    Json members;
};

// Throws UsageError when the file cannot be read, or is no JSON object.
HrdFields ReadHrdFields(const std::string &path);

// Gives the VUI these parameters, as far as it has none of its own. Throws UsageError when a member is
// missing, wrong, or one that the syntax does not have beside the others.
void ApplyHrdFields(const HrdFields &fields, int max_sub_layers_minus1, vui_h265_t *vui);

}  // namespace h265tool

#endif
