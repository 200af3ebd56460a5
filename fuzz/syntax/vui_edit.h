// Edits of a parsed VUI as an encoder's control software makes them: values of any element in its range, and
// elements switched on or off.

#ifndef FUZZ_SYNTAX_VUI_EDIT_H
#define FUZZ_SYNTAX_VUI_EDIT_H

#include "h265/vui.h"
#include "support/fuzz_input.h"

namespace fuzz {

void EditVui(FuzzInput *input, vui_h265_t *vui);

// What a parser derives when it reads the VUI that a writer makes of this record.
void DeriveVui(vui_h265_t *vui);

}  // namespace fuzz

#endif
