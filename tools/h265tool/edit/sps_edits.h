// Edits of the record of an SPS.

#ifndef H265TOOL_EDIT_SPS_EDITS_H
#define H265TOOL_EDIT_SPS_EDITS_H

#include "edit/request.h"
#include "h265.h"

namespace h265tool {

// Gives the record what is asked for. Throws UnitError when the SPS does not allow it, and UsageError when it
// lies in the HRD file.
void ApplyEdits(const EditRequest &request, sps_h265_t *sps);

}  // namespace h265tool

#endif
