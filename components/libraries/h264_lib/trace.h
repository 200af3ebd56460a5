// The trace channel of the H.264 library and its failed argument checks.

#ifndef H264_TRACE_H
#define H264_TRACE_H

#include "channel_level.h"

namespace h264 {

extern HDBG trace_channel;

}  // namespace h264

#define TRACE_ERROR(...)                                                                           \
    do {                                                                                           \
        if (LetsThrough(h264::trace_channel, 3))                                                   \
            _DoDbgPrintEx(h264::trace_channel, 3, __func__, __FILE_NAME__, __LINE__, __VA_ARGS__); \
    } while (0)

#define ASSERT_ARGUMENT(expression)                                    \
    do {                                                               \
        if (!(expression)) [[unlikely]]                                \
            _DoAssert(#expression, __func__, __FILE_NAME__, __LINE__); \
    } while (0)

#endif
