/*
 * A host with a trace service of its own: the functions below take the place of the project's. The program
 * succeeds only from within the last of them, which the unloading of the library calls.
 */
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "bitbuffer.h"
#include "h265.h"

static struct tagHDBG channel = {0xFFFFFFFF, 8};
static int opened;
static int failed;

static char last_origin[128]; /* function and file of the last call of the service */
static char last_text[512];
static int last_level;

static void Record(int level, const char *function, const char *file, const char *text) {
    last_level = level;
    snprintf(last_origin, sizeof last_origin, "%s (%s)", function, file);
    snprintf(last_text, sizeof last_text, "%s", text);
}

static void ExpectLast(int level, const char *origin, const char *text) {
    if (last_level == level && strcmp(last_origin, origin) == 0 &&
        strncmp(last_text, text, strlen(text)) == 0)
        return;
    fprintf(stderr, "expected %d %s: %s\nhave     %d %s: %s\n", level, origin, text, last_level, last_origin,
            last_text);
    failed = 1;
}

BOOL _DoDbgInit(const char *channel_name, HDBG *phDbg) {
    opened += strcmp(channel_name, "H265LIB") == 0;
    *phDbg = &channel;
    return TRUE;
}

void _DoDbgPrintEx(HDBG hDbg, int level, const char *function, const char *file, int line, const char *format,
                   ...) {
    char text[sizeof last_text];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    failed |= hDbg != &channel || line <= 0;
    Record(level, function, file, text);
}

void _DoDbgPrintBuffer(HDBG hDbg, int level, const unsigned char *buffer, size_t length, const char *title,
                       const char *function, const char *file, int line) {
    failed |= hDbg != &channel || line <= 0 || length != 1 || buffer[0] != 0xAB;
    Record(level, function, file, title);
}

void _DoAssert(const char *expression, const char *function, const char *file, int line) {
    failed |= line <= 0;
    Record(3, function, file, expression);
}

void _DoTextAssert(const char *function, const char *file, int line, const char *text) {
    failed |= line <= 0;
    Record(3, function, file, text);
}

void _DoDbgUninitEx(HDBG *phDbg, const char *function, const char *file, int line) {
    ExpectLast(5, "_H265LIB_AutoShutdown (library.cpp)", "Called.\n");
    failed |= phDbg != &g_hH265LibDbg || strcmp(function, "_H265LIB_AutoShutdown") != 0 ||
              strcmp(file, "library.cpp") != 0 || line <= 0;
    _Exit(failed ? EXIT_FAILURE : EXIT_SUCCESS);
}

int main(void) {
    unsigned char byte = 0xAB;
    bitbuffer_t bb;

    ExpectLast(5, "_H265LIB_AutoInit (library.cpp)", "Called.\n");
    failed |= opened != 1 || g_hH265LibDbg != &channel;

    H265Lib_format_end_of_sequence_nalu(NULL, 0);
    ExpectLast(3, "H265Lib_format_end_of_sequence_nalu (end_of_sequence.cpp)", "ERROR - buffer:");

    __DoInitBitBuffer(NULL, &byte, 8, "main", "host.c", 1);
    ExpectLast(3, "main (host.c)", "bb != NULL");

    __DoInitBitBuffer(&bb, &byte, 8, "main", "host.c", 2);
    DisplayBitBuffer(&bb, "TITLE");
    ExpectLast(7, "DisplayBitBuffer (cursor.cpp)", "TITLE");

    return EXIT_FAILURE; /* unless the library is unloaded as it should be */
}
