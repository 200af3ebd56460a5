// A SEI NAL unit that the library built, as a receiver sees it.

#ifndef FUZZ_SUPPORT_BUILT_SEI_H
#define FUZZ_SUPPORT_BUILT_SEI_H

#include "h265.h"
#include "support/exact_buffer.h"

namespace fuzz {

// The scan of its one message. Whatever the message, it is the only one of a prefix SEI NAL unit with a start
// code of three bytes, and trailing bits are all that stands behind it.
struct BuiltSei {
    ExactBuffer nal;
    SEI_message_t header{};
    int suid = -1;

    explicit BuiltSei(const Bytes &bytes);
};

}  // namespace fuzz

#endif
