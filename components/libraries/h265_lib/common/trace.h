// How every function of the library traces and checks its arguments.

#ifndef H265_COMMON_TRACE_H
#define H265_COMMON_TRACE_H

#include <ctime>

#include <atomic>

#include "channel_level.h"
#include "h265.h"

// The levels in use, from least to most detailed.
enum TraceLevel : int {
    kError = 3,
    kWarning = 4,
    kDisplay = 5,
    kInformation = 6,
    kFunction = 7,
    kDetail = 8,
};

inline bool TraceLetsThrough(int level) {
    return __builtin_expect(LetsThrough(g_hH265LibDbg, level), false);
}

// Issues one message under the calling function's name: TRACE(level, format, arguments...).
#define TRACE(level, ...)                                                                        \
    do {                                                                                         \
        if (TraceLetsThrough(level))                                                             \
            _DoDbgPrintEx(g_hH265LibDbg, level, __func__, __FILE_NAME__, __LINE__, __VA_ARGS__); \
    } while (0)

// Reports an argument that is not as it has to be, and carries on. Like every message, only while the library
// has its channel.
#define ASSERT_ARGUMENT(expression)        \
    do {                                   \
        if (!(expression)) [[unlikely]]    \
            REPORT_ASSERTION(#expression); \
    } while (0)

#define REPORT_ASSERTION(text)                                  \
    do {                                                        \
        if (g_hH265LibDbg != nullptr)                           \
            _DoAssert(text, __func__, __FILE_NAME__, __LINE__); \
    } while (0)

// The same for a condition that is told in words.
#define TEXT_ASSERTION(text)                                        \
    do {                                                            \
        if (g_hH265LibDbg != nullptr)                               \
            _DoTextAssert(__func__, __FILE_NAME__, __LINE__, text); \
    } while (0)

// Where a message comes from, for helpers that report in the name of their caller.
struct TraceSite {
    const char *function;
    const char *file;
    int line;
};

#define TRACE_SITE                        \
    TraceSite {                           \
        __func__, __FILE_NAME__, __LINE__ \
    }

// Issues one message in the name of `site`: a format with its arguments, or a plain text.
template <typename Argument, typename... Arguments>
[[gnu::cold, gnu::noinline]] void TraceAt(const TraceSite &site, int level, const char *format,
                                          Argument argument, Arguments... arguments) {
    if (TraceLetsThrough(level))
        _DoDbgPrintEx(g_hH265LibDbg, level, site.function, site.file, site.line, format, argument,
                      arguments...);
}

[[gnu::cold, gnu::noinline]] inline void TraceAt(const TraceSite &site, int level, const char *text) {
    TraceAt(site, level, "%s", text);
}

[[gnu::cold, gnu::noinline]] inline void AssertAt(const TraceSite &site, const char *expression) {
    if (g_hH265LibDbg != nullptr)
        _DoAssert(expression, site.function, site.file, site.line);
}

// The time at which a message that could repeat on every picture was last due, one for each such message.
using LastLogged = std::atomic<std::time_t>;

// Whether more than `seconds` have passed since then; if so, now becomes the last time, whether or not the
// channel lets the message through. Two threads at once may both be told yes.
inline bool IsDue(LastLogged &last_logged, std::time_t seconds, std::time_t now = std::time(nullptr)) {
    if (now - last_logged.load(std::memory_order_relaxed) <= seconds)
        return false;
    last_logged.store(now, std::memory_order_relaxed);
    return true;
}

#endif
