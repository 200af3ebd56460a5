/**
 * @file
 * dbgtrace.h - the debug trace service: named channels with a level, and one sink for their messages.
 *
 * A channel lets a message through when the message's level is at most the channel's nMaxLevel:
 *
 *     3 errors   4 warnings and notices   5 load/unload, displays   6 information and field values
 *     7 function entry/exit and step traces   8 per-entry detail
 *
 * Configuration. A channel opens at level 3 (errors only) unless the environment says otherwise:
 *
 *     DBGTRACE_LEVEL=N            for every channel
 *     DBGTRACE_LEVEL_<CHANNEL>=N  for one channel; it takes precedence
 *
 * A value that is no number is reported once and ignored.
 *
 * Output. Messages go to standard error, each in one write, behind the prefix
 *
 *     CHANNEL level function (file:line):
 *
 * unless DbgTraceSetSink put the host's own logger in its place. The middle of a line gets no prefix, so
 * that a message without a line end is continued by the next.
 *
 * Thread safety. Messages may be issued from any thread. Opening and closing channels and changing the
 * sink belong to the start and the end of a program (or to the loading and unloading of a library): one
 * thread at a time. nMaxLevel may be changed at any time; a message near the change may or may not appear.
 *
 * Nothing here allocates memory. A host that has a trace service of its own may link it in place of this
 * library: the functions with a leading underscore are all that the other libraries call.
 */
#ifndef DBGTRACE_H
#define DBGTRACE_H

#include "xtypes.h"

XTYPES_API_BEGIN

/** @addtogroup dbgtrace */ /** @{ */

/** @cond */
#if defined(__GNUC__)
#define DBGTRACE_PRINTF(format_index, first_argument) \
    __attribute__((format(printf, format_index, first_argument)))
#define DBGTRACE_SELDOM __attribute__((cold)) /* what leads to the call is kept out of the way */
#else
#define DBGTRACE_PRINTF(format_index, first_argument)
#define DBGTRACE_SELDOM
#endif
/** @endcond */

/** The handle of one channel. It stays readable after the channel was closed. */
typedef struct tagHDBG {
    DWORD dwReserved; /**< the service's own */
    int nMaxLevel;    /**< the most detailed level let through; may be raised or lowered at any time */
} * HDBG;

#define DBGTRACE_DEFAULT_LEVEL 3      /**< nMaxLevel of a channel when the environment says nothing */
#define DBGTRACE_MAX_CHANNELS 32      /**< different names in the life of a process */
#define DBGTRACE_CHANNEL_NAME_SIZE 32 /**< bytes of a channel's name, its terminating zero included */
#define DBGTRACE_MESSAGE_SIZE 2048    /**< bytes of one message with its prefix; what is longer is cut */

/**
 * Opens the channel of that name, or finds it when it is open already, and sets its nMaxLevel to the default
 * level for that name. Each call needs one _DoDbgUninitEx.
 *
 * @param channel_name  shorter than DBGTRACE_CHANNEL_NAME_SIZE
 * @param phDbg         receives the handle
 * @return TRUE; or FALSE, with *phDbg set to NULL, when the name is missing or too long or no channel is
 *         left. A NULL phDbg is reported as a failed assertion and gives FALSE
 */
BOOL _DoDbgInit(const char *channel_name, HDBG *phDbg);

/**
 * Closes the channel (when it was opened several times: one of its users leaves) and sets *phDbg to NULL.
 * A NULL phDbg is reported as a failed assertion; a NULL *phDbg is left as it is.
 *
 * @param phDbg     the handle
 * @param function  with `file` and `line`: the caller, for the report
 * @param file      a name without directory
 * @param line      its line
 */
void _DoDbgUninitEx(HDBG *phDbg, const char *function, const char *file, int line);

/**
 * Writes one formatted message on the channel. It does not look at nMaxLevel: the caller has done that.
 * Nothing happens when hDbg is NULL or no handle of this service.
 *
 * @param hDbg      the channel
 * @param level     of the message
 * @param function  with `file` and `line`: who traces
 * @param file      a name without directory
 * @param line      its line
 * @param format    as printf has it, and its arguments
 */
void _DoDbgPrintEx(HDBG hDbg, int level, const char *function, const char *file, int line, const char *format,
                   ...) DBGTRACE_PRINTF(6, 7) DBGTRACE_SELDOM;

/**
 * Writes a title line ("title (length bytes):") and a dump of the bytes, 16 a row: offset, hexadecimal,
 * ASCII. Each row is a message of its own. Looks at nMaxLevel: nothing happens when the channel does not let
 * `level` through, or hDbg is NULL.
 *
 * @param hDbg      the channel
 * @param level     of the messages
 * @param buffer    the bytes; NULL is dumped as an empty buffer
 * @param length    how many
 * @param title     what they are
 * @param function  with `file` and `line`: who traces
 * @param file      a name without directory
 * @param line      its line
 */
void _DoDbgPrintBuffer(HDBG hDbg, int level, const unsigned char *buffer, size_t length, const char *title,
                       const char *function, const char *file, int line);

/**
 * Reports a failed argument check, quoting the expression, at level 3 on the channel "ASSERT":
 * "Assertion failed: expression", with a line end. Returns; the calling function carries on.
 *
 * @param expression  what does not hold
 * @param function    with `file` and `line`: where
 * @param file        a name without directory
 * @param line        its line
 */
void _DoAssert(const char *expression, const char *function, const char *file, int line) DBGTRACE_SELDOM;

/**
 * Reports a failed consistency condition at level 3 on the channel "ASSERT": the text, with a line end.
 * Returns; the calling function carries on.
 *
 * @param function  with `file` and `line`: where
 * @param file      a name without directory
 * @param line      its line
 * @param text      what is wrong
 */
void _DoTextAssert(const char *function, const char *file, int line, const char *text) DBGTRACE_SELDOM;

/** One message as it is handed to a sink. The texts are valid during the call only. */
typedef struct DbgTraceMessage {
    const char *channel;  /**< its name */
    int level;            /**< 3 to 8 */
    const char *function; /**< who traces */
    const char *file;     /**< without directory */
    int line;             /**< its line */
    const char *text;     /**< as formatted, without prefix; most texts end with a line end, a few do not */
} DbgTraceMessage;

/**
 * Takes a message.
 *
 * @param message  valid during the call only
 * @param user     as DbgTraceSetSink got it
 */
typedef void (*DbgTraceSink)(const DbgTraceMessage *message, void *user);

/**
 * Hands every message to `sink` in place of standard error. The sink is called on the thread that traces, and
 * must not trace itself. The libraries trace once more when they are unloaded: a sink whose data does not
 * live as long is taken back before.
 *
 * @param sink  NULL brings standard error back
 * @param user  handed to the sink as it is given here
 */
void DbgTraceSetSink(DbgTraceSink sink, void *user);

/** @} */

XTYPES_API_END

#endif
