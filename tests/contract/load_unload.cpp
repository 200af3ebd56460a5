// Loads and unloads the library and looks at what it prints: load_unload <library> <level>.

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "captured_stderr.h"

namespace {

// Whether the writes are one "Called.\n" of a function, or none when none is wanted.
bool AreCallOf(const std::vector<std::string> &writes, const char *function, bool wanted) {
    if (!wanted)
        return writes.empty();
    if (writes.size() != 1)
        return false;
    const std::string start = std::string("H265LIB 5 ") + function + " (library.cpp:";
    const std::string end = "): Called.\n";
    const std::string &write = writes[0];
    return write.size() > start.size() + end.size() && write.compare(0, start.size(), start) == 0 &&
           write.compare(write.size() - end.size(), end.size(), end) == 0;
}

void Print(const char *title, const std::vector<std::string> &writes) {
    std::printf("%s printed %zu messages\n", title, writes.size());
    for (const std::string &write : writes)
        std::printf("  %s", write.c_str());
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 3)
        return EXIT_FAILURE;
    const bool wanted = std::atoi(argv[2]) >= 5;
    setenv("DBGTRACE_LEVEL_H265LIB", argv[2], 1);

    test::CapturedStderr captured;
    void *const library = dlopen(argv[1], RTLD_NOW);
    if (library == nullptr) {
        std::printf("%s\n", dlerror());
        return EXIT_FAILURE;
    }
    const std::vector<std::string> at_load = captured.Writes();
    const int closed = dlclose(library);
    const std::vector<std::string> at_unload = captured.Writes();

    Print("loading", at_load);
    Print("unloading", at_unload);
    const bool as_wanted = closed == 0 && AreCallOf(at_load, "_H265LIB_AutoInit", wanted) &&
                           AreCallOf(at_unload, "_H265LIB_AutoShutdown", wanted);
    return as_wanted ? EXIT_SUCCESS : EXIT_FAILURE;
}
