#include "h265d/rewriting/rewrite_run.h"

#include <cstdlib>

BitString::~BitString() {
    if (bytes == nullptr)
        return;
    std::free(bytes);
    if (!done && TraceLetsThrough(kFunction))
        TraceAt(site, kFunction, "Done.\n");
}

bool AllocateBitString(BitString *string) {
    // not cleared: a run is read from it that was written before
    string->bytes = static_cast<unsigned char *>(std::malloc(BIT_STRING_CAPACITY));
    if (string->bytes != nullptr)
        return true;
    // speaks of bits, and gives bytes
    TraceAt(string->site, kError, "Failed to allocate %d bits to store old SPS string.\n",
            BIT_STRING_CAPACITY);
    return false;
}

int ReadRun(bitbuffer_t *reader, int num_bits, BitString *string) {
    if (num_bits >= 0 && GetNextNBitsAsStringEx(reader, static_cast<unsigned int>(num_bits), string->bytes,
                                                BIT_STRING_CAPACITY) != -1)
        return 0;
    TraceAt(string->site, kError, "Failed to get %d bits as string.\n", num_bits);
    return -1;
}

int WriteRun(bitbuffer_t *writer, int num_bits, const BitString &string) {
    if (SetNextNBitsFromString(writer, static_cast<unsigned int>(num_bits), string.bytes) != -1)
        return 0;
    TraceAt(string.site, kError, "Failed to set %d bits as string.\n", num_bits);
    return -1;
}

int CopyRun(bitbuffer_t *reader, int num_bits, bitbuffer_t *writer, BitString *string) {
    if (ReadRun(reader, num_bits, string) == -1)
        return -1;
    return WriteRun(writer, num_bits, *string);
}
