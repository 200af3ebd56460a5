// One message on its way from a trace call to the sink.

#ifndef DBGTRACE_MESSAGE_H
#define DBGTRACE_MESSAGE_H

#include <cstdarg>

#include "dbgtrace.h"

namespace dbgtrace {

// Where a message comes from and how detailed it is.
struct Origin {
    const char *channel;
    int level;
    const char *function;
    const char *file;
    int line;
};

// Formats one message and hands it to the sink.
void Emit(const Origin &origin, const char *format, std::va_list arguments);
void Emit(const Origin &origin, const char *format, ...) DBGTRACE_PRINTF(2, 3);

}  // namespace dbgtrace

#endif
