#include "trace.h"

namespace h264 {

HDBG trace_channel = nullptr;

namespace {

[[gnu::constructor]] void OpenTraceChannel() {
    _DoDbgInit("H264LIB", &trace_channel);
}

[[gnu::destructor]] void CloseTraceChannel() {
    _DoDbgUninitEx(&trace_channel, __func__, __FILE_NAME__, __LINE__);
}

}  // namespace
}  // namespace h264
