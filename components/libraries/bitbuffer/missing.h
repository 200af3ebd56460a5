// How the operations check their arguments.

#ifndef BITBUFFER_MISSING_H
#define BITBUFFER_MISSING_H

#include "bitbuffer.h"

// Whether a pointer is missing, which is reported in the calling operation's name.
#define MISSING(pointer) \
    ((pointer) == nullptr && (_DoAssert(#pointer " != NULL", __func__, __FILE_NAME__, __LINE__), true))

#endif
