#include "entry_points/call.h"
#include "h265.h"

namespace test {
namespace {

constexpr char kFunction[] = "Function";
constexpr char kFile[] = "file.c";

Call Tracing(void (*trace)()) {
    return {[=] {
        trace();
        return 0;
    }};
}

}  // namespace

std::vector<EntryPoint> TraceEntryPoints() {
    return {
        {"_DoDbgInit", "",
         [](Fill) {
             const auto handle = std::make_shared<HDBG>();
             return Call{.run = [=] { return _DoDbgInit("ENTRY_POINTS", handle.get()); },
                         .release = [=] { _DoDbgUninitEx(handle.get(), kFunction, kFile, 1); }};
         },
         0, 0, true},
        {"_DoDbgUninitEx", "",
         [](Fill) {
             const auto handle = std::make_shared<HDBG>();
             _DoDbgInit("ENTRY_POINTS", handle.get());
             return Call{[=] {
                 _DoDbgUninitEx(handle.get(), kFunction, kFile, 1);
                 return *handle == nullptr;
             }};
         },
         0, 0, true},
        {"DbgTraceSetSink", "", [](Fill) { return Tracing([] { DbgTraceSetSink(nullptr, nullptr); }); }, 0, 0,
         true},
        {"_DoDbgPrintEx", "",
         [](Fill) {
             return Tracing(
                 [] { _DoDbgPrintEx(g_hH265LibDbg, 3, kFunction, kFile, 1, "%s %d\n", "text", 1); });
         }},
        {"_DoDbgPrintBuffer", "",
         [](Fill) {
             return Tracing([] {
                 static const unsigned char bytes[40] = {};
                 _DoDbgPrintBuffer(g_hH265LibDbg, 3, bytes, sizeof bytes, "BYTES", kFunction, kFile, 1);
             });
         }},
        {"_DoAssert", "", [](Fill) { return Tracing([] { _DoAssert("a == b", kFunction, kFile, 1); }); }},
        {"_DoTextAssert", "",
         [](Fill) { return Tracing([] { _DoTextAssert(kFunction, kFile, 1, "text"); }); }},
    };
}

}  // namespace test
