#include "h265d/rewriting/sps_tail.h"

#include <strings.h>

#include "common/write.h"
#include "h265d/rewriting/vui.h"

int FinishSps(bitbuffer_t *reader, int SpsSodbLength, const sps_h265_t *sps, bitbuffer_t *writer,
              BitString *string) {
    // The tail is split into a bit string and its last byte. It passes through the reader before the VUI is
    // written, so that failures come in this order.
    reader->bit_offset = static_cast<unsigned int>(sps->sps_extension_present_offset);
    const int num_bits = BitsUpTo(SpsSodbLength * 8, *reader);
    TRACE(kFunction,
          "SpsSodbLength bytes:%d(bits:%d). Current offset in bb:%d, num_bits:%d, IsByteBoudary:%s.\n",
          SpsSodbLength, SpsSodbLength * 8, reader->bit_offset, num_bits,
          IsByteAligned(*reader) ? "TRUE" : "FALSE");
    const int LastByteNumBits = num_bits > 8 ? 8 : num_bits;
    const int string_bits = num_bits - LastByteNumBits;
    if (string_bits > 0 && ReadRun(reader, string_bits, string) == -1)
        return -1;
    uint8_t LastByte = 0;
    if (GetNextNBitsAsUint8(reader, static_cast<unsigned int>(LastByteNumBits), &LastByte) == -1) {
        TRACE(kError, "Failed to get %d bits as Uint8.\n", LastByteNumBits);
        return -1;
    }
    TRACE(kFunction, "num_bits:%d, LastByteNumBits:%d, LastByte:%#x.\n", num_bits, LastByteNumBits, LastByte);

    if (SetVui(writer, sps) == -1)
        return -1;
    if (string_bits > 0 && WriteRun(writer, string_bits, *string) == -1)
        return -1;
    const int StopBitPos = ffs(LastByte) - 1;
    ASSERT_ARGUMENT(StopBitPos >= 0);
    TRACE(kFunction, "Before Trailing bits, bitbuffer BitOffset:%d, StopBitPos:%d, LastByte:%#x.\n",
          writer->bit_offset, StopBitPos, LastByte);
    {
        BitWriter bb(writer);
        SET_U_AS(bb, static_cast<unsigned int>(LastByteNumBits), LastByte, "Failed to set StopBit.\n");
        while (bb.offset() % 8 != 0)
            SET_FLAG_AS(bb, 0, "Failed to set padding bit.\n");
    }

    const int bytes = BytesWritten(*writer);
    TRACE(kFunction, "Final new SPS num_bits:%d, Bytes:%d.\n", writer->bit_offset, bytes);
    string->done = true;
    return bytes;
}
