// The test in front of every message.

#ifndef COMMON_CHANNEL_LEVEL_H
#define COMMON_CHANNEL_LEVEL_H

#include "dbgtrace.h"

// Whether a channel, where there is one, lets messages of this level through. A program may change the level
// at any time, from another thread too.
inline bool LetsThrough(HDBG channel, int level) {
    return channel != nullptr && __atomic_load_n(&channel->nMaxLevel, __ATOMIC_RELAXED) >= level;
}

#endif
