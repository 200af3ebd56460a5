// Loading and unloading: the trace channel lives as long as the library is loaded.

#include "bitbuffer.h"
#include "common/trace.h"

HDBG g_hH265LibDbg = nullptr;

extern "C" {

[[gnu::constructor]] void _H265LIB_AutoInit() {
    _DoDbgInit("H265LIB", &g_hH265LibDbg);
    BitBufferSetTraceChannel(&g_hH265LibDbg);
    TRACE(kDisplay, "Called.\n");
}

[[gnu::destructor]] void _H265LIB_AutoShutdown() {
    TRACE(kDisplay, "Called.\n");
    BitBufferSetTraceChannel(nullptr);
    _DoDbgUninitEx(&g_hH265LibDbg, __func__, __FILE_NAME__, __LINE__);
}

}  // extern "C"
