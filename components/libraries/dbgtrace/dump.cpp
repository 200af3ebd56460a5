// Hex dumps, row by row.

#include "channel_level.h"

namespace {

constexpr size_t kRow = 16;

void PutHex(char *place, unsigned char byte) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    place[0] = kDigits[byte >> 4];
    place[1] = kDigits[byte & 15];
}

char Printable(unsigned char byte) {
    return byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
}

}  // namespace

void _DoDbgPrintBuffer(HDBG hDbg, int level, const unsigned char *buffer, size_t length, const char *title,
                       const char *function, const char *file, int line) {
    if (!LetsThrough(hDbg, level))
        return;
    if (buffer == nullptr)
        length = 0;
    _DoDbgPrintEx(hDbg, level, function, file, line, "%s (%zu bytes):\n", title, length);
    for (size_t row = 0; row < length; row += kRow) {
        char hex[kRow * 3];  // "40 01 0C", blanks where a short row has no byte, terminated
        char ascii[kRow + 1];
        size_t columns = 0;
        for (; columns < kRow && row + columns < length; columns++) {
            PutHex(hex + columns * 3, buffer[row + columns]);
            hex[columns * 3 + 2] = ' ';
            ascii[columns] = Printable(buffer[row + columns]);
        }
        ascii[columns] = '\0';
        hex[columns * 3 - 1] = '\0';
        _DoDbgPrintEx(hDbg, level, function, file, line, "%08zx  %-47s  |%s|\n", row, hex, ascii);
    }
}
