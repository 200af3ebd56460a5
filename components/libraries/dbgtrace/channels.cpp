// The channels: a fixed table in which a name keeps its place, and so its handle, for good.

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "dbgtrace.h"
#include "message.h"

namespace dbgtrace {
namespace {

struct Channel {
    tagHDBG handle;  // dwReserved is the index in the table
    char name[DBGTRACE_CHANNEL_NAME_SIZE];
    unsigned int users;
    bool bad_level_reported;
};

Channel channels[DBGTRACE_MAX_CHANNELS];

Channel *FindOrAdd(const char *name) {
    for (DWORD index = 0; index < DBGTRACE_MAX_CHANNELS; index++) {
        Channel &channel = channels[index];
        if (channel.name[0] == '\0') {
            channel.handle.dwReserved = index;
            std::memcpy(channel.name, name, std::strlen(name) + 1);
            return &channel;
        }
        if (std::strcmp(channel.name, name) == 0)
            return &channel;
    }
    return nullptr;
}

// The level that an environment variable asks for, else `otherwise`; what is no number is reported once.
int LevelFromEnvironment(const char *variable, int otherwise, bool *bad_level_reported) {
    const char *value = std::getenv(variable);
    if (value == nullptr)
        return otherwise;
    char *end = nullptr;
    const long level = std::strtol(value, &end, 10);
    if (end != value && *end == '\0')
        return static_cast<int>(std::clamp<long>(level, INT_MIN, INT_MAX));
    if (!*bad_level_reported)
        Emit({"DBGTRACE", 3, __func__, __FILE_NAME__, __LINE__}, "%s=%s is not a level, ignored.\n", variable,
             value);
    *bad_level_reported = true;
    return otherwise;
}

int DefaultLevel(Channel *channel) {
    static constexpr char kEveryChannel[] = "DBGTRACE_LEVEL";
    static bool bad_level_of_every_channel_reported = false;

    char this_channel[sizeof kEveryChannel + DBGTRACE_CHANNEL_NAME_SIZE] = "DBGTRACE_LEVEL_";
    std::strcat(this_channel, channel->name);
    const int level =
        LevelFromEnvironment(kEveryChannel, DBGTRACE_DEFAULT_LEVEL, &bad_level_of_every_channel_reported);
    return LevelFromEnvironment(this_channel, level, &channel->bad_level_reported);
}

// Opens the channel of a name that fits the table; null when the table is full.
HDBG Open(const char *name) {
    Channel *const channel = FindOrAdd(name);
    if (channel == nullptr)
        return nullptr;
    channel->users++;
    channel->handle.nMaxLevel = DefaultLevel(channel);
    return &channel->handle;
}

// The channel of a handle; null when the handle is none of this service's.
Channel *ChannelOf(HDBG hDbg) {
    if (hDbg == nullptr || hDbg->dwReserved >= DBGTRACE_MAX_CHANNELS)
        return nullptr;
    Channel *const channel = &channels[hDbg->dwReserved];
    return &channel->handle == hDbg ? channel : nullptr;
}

// Assertions come without a handle: they have a channel of their own, open as long as the service is
// loaded. Until then (priority 101 is the first that is not reserved) they are reported unconditionally.
HDBG assertions = nullptr;

[[gnu::constructor(101)]] void OpenAssertions() {
    assertions = Open("ASSERT");
}

void ReportAssertion(const char *function, const char *file, int line, const char *format, const char *text) {
    if (assertions == nullptr || assertions->nMaxLevel >= 3)
        Emit({"ASSERT", 3, function, file, line}, format, text);
}

}  // namespace
}  // namespace dbgtrace

BOOL _DoDbgInit(const char *channel_name, HDBG *phDbg) {
    if (phDbg == nullptr) {
        _DoAssert("phDbg != NULL", __func__, __FILE_NAME__, __LINE__);
        return FALSE;
    }
    *phDbg = nullptr;
    if (channel_name == nullptr || channel_name[0] == '\0' ||
        std::strlen(channel_name) >= DBGTRACE_CHANNEL_NAME_SIZE)
        return FALSE;
    *phDbg = dbgtrace::Open(channel_name);
    return *phDbg != nullptr;
}

void _DoDbgUninitEx(HDBG *phDbg, const char *function, const char *file, int line) {
    if (phDbg == nullptr) {
        _DoAssert("phDbg != NULL", function, file, line);
        return;
    }
    dbgtrace::Channel *const channel = dbgtrace::ChannelOf(*phDbg);
    if (channel != nullptr && channel->users > 0)
        channel->users--;
    *phDbg = nullptr;
}

void _DoDbgPrintEx(HDBG hDbg, int level, const char *function, const char *file, int line, const char *format,
                   ...) {
    const dbgtrace::Channel *const channel = dbgtrace::ChannelOf(hDbg);
    if (channel == nullptr)
        return;
    std::va_list arguments;
    va_start(arguments, format);
    dbgtrace::Emit({channel->name, level, function, file, line}, format, arguments);
    va_end(arguments);
}

void _DoAssert(const char *expression, const char *function, const char *file, int line) {
    dbgtrace::ReportAssertion(function, file, line, "Assertion failed: %s\n", expression);
}

void _DoTextAssert(const char *function, const char *file, int line, const char *text) {
    dbgtrace::ReportAssertion(function, file, line, "%s\n", text);
}
