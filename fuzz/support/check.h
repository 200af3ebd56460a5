// What has to hold: a condition that does not ends the process, which is how a fuzzer says that it found
// something.

#ifndef FUZZ_SUPPORT_CHECK_H
#define FUZZ_SUPPORT_CHECK_H

#include <cstdio>
#include <cstdlib>

#define FUZZ_CHECK(condition)                                                            \
    do {                                                                                 \
        if (!(condition)) {                                                              \
            std::fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition); \
            std::abort();                                                                \
        }                                                                                \
    } while (0)

#endif
