// Precision time stamp: MISB ST 0604 in unregistered user data.

#include "common/trace.h"
#include "h265/sei/user_data.h"

int H265Lib_formatMISPMicroSecondTimeSEI(unsigned char *buffer, int len, const INT64 *pllUsecTime,
                                         unsigned char StatusByte) {
    static constexpr unsigned char kUuid[] = {0xA8, 0x68, 0x7D, 0xD4, 0xD7, 0x59, 0x37, 0x58,
                                              0xA5, 0xCE, 0xF0, 0x33, 0x8B, 0x65, 0x45, 0xF1};
    constexpr unsigned char kReservedBits = 0x1F;

    if (buffer == nullptr) {
        TRACE(kError, "buffer:%p is NULL!\n", static_cast<void *>(buffer));
        return -1;
    }
    if (pllUsecTime == nullptr) {
        TRACE(kError, "pllUsecTime:%p is NULL, no precise time given!\n",
              static_cast<const void *>(pllUsecTime));
        return -1;
    }
    if ((StatusByte & kReservedBits) != kReservedBits) {
        TRACE(kError, "StatusByte:%#x, bits[4:0]:%#x should be 0x1f!\n", StatusByte,
              StatusByte & kReservedBits);
        return -1;
    }
    TRACE(kInformation, "Precision time:%016lld.\n", static_cast<long long>(*pllUsecTime));

    // most significant byte first, with 0xFF behind every second byte against start code emulation
    const UINT64 time = static_cast<UINT64>(*pllUsecTime);
    const auto byte = [time](int shift) { return static_cast<unsigned char>(time >> shift); };
    unsigned char payload[] = {StatusByte, byte(56), byte(48), 0xFF, byte(40), byte(32),
                               0xFF,       byte(24), byte(16), 0xFF, byte(8),  byte(0)};
    return _format_sei_user_data_unregistered_nal(buffer, static_cast<unsigned int>(len), kUuid, sizeof kUuid,
                                                  payload, sizeof payload);
}
