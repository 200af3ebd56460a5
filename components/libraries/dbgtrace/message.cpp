// Formatting, the prefix of a line, and the sinks.

#include "message.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace dbgtrace {
namespace {

struct Sink {
    DbgTraceSink callback;
    void *user;
};

Sink host_sink{};

// Whether standard error stands in the middle of a line, which the next message then continues.
std::atomic<bool> in_mid_line{false};

void WriteToStandardError(const char *bytes, size_t length) {
    while (length > 0) {
        const ssize_t written = ::write(STDERR_FILENO, bytes, length);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return;  // nowhere left to complain
        bytes += written;
        length -= static_cast<size_t>(written);
    }
}

// The number of bytes that stand in a buffer of `size` after an snprintf that returned `result`.
size_t Stored(int result, size_t size) {
    if (result < 0)
        return 0;
    return static_cast<size_t>(result) < size ? static_cast<size_t>(result) : size - 1;
}

}  // namespace

void Emit(const Origin &origin, const char *format, std::va_list arguments) {
    char message[DBGTRACE_MESSAGE_SIZE];
    size_t prefix = 0;
    if (host_sink.callback == nullptr && !in_mid_line.load(std::memory_order_relaxed))
        prefix = Stored(std::snprintf(message, sizeof message, "%s %d %s (%s:%d): ", origin.channel,
                                      origin.level, origin.function, origin.file, origin.line),
                        sizeof message);

    const size_t room = sizeof message - prefix;
    const int wanted = std::vsnprintf(message + prefix, room, format, arguments);
    const size_t length = prefix + Stored(wanted, room);
    if (wanted >= 0 && static_cast<size_t>(wanted) >= room)
        std::memcpy(message + length - 4, "...\n", 4);

    if (host_sink.callback != nullptr) {
        const DbgTraceMessage structured = {origin.channel, origin.level, origin.function,
                                            origin.file,    origin.line,  message};
        host_sink.callback(&structured, host_sink.user);
        return;
    }
    if (length > 0)
        in_mid_line.store(message[length - 1] != '\n', std::memory_order_relaxed);
    WriteToStandardError(message, length);
}

void Emit(const Origin &origin, const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    Emit(origin, format, arguments);
    va_end(arguments);
}

}  // namespace dbgtrace

void DbgTraceSetSink(DbgTraceSink sink, void *user) {
    dbgtrace::host_sink = {sink, user};
}
