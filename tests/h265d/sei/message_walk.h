// Walking the messages of a SEI NAL unit, and what each call gives.

#ifndef TESTS_H265D_SEI_MESSAGE_WALK_H
#define TESTS_H265D_SEI_MESSAGE_WALK_H

#include <ostream>

#include "h265.h"
#include "support/nal_unit.h"

namespace test {

constexpr int kPrefix = 39;
constexpr int kSuffix = 40;
constexpr int kUntouched = -77;

// What a call is to give.
struct Outcome {
    int payload_type;
    UINT payload_size;
    UINT payload_index;
    int payload_offset;
    int suid;
    BOOL more = FALSE;

    bool operator==(const Outcome &) const = default;
    friend void PrintTo(const Outcome &outcome, std::ostream *os) {
        *os << "type " << outcome.payload_type << ", size " << outcome.payload_size << ", index "
            << outcome.payload_index << ", offset " << outcome.payload_offset << ", suid " << outcome.suid
            << ", more " << outcome.more;
    }
};

// The arguments of a walk over one NAL unit. Each call copies the NAL unit to a block of its exact size.
struct Walk {
    int payload_offset = 0;
    int nal_type_offset = 0;
    SEI_message_t header{0x55, 0x55, 0x55};
    int suid = kUntouched;
    BOOL more = 2;

    BOOL Next(const Bytes &nal) {
        const Bytes exact(nal);
        return H265Lib_DetermineSEIType(exact.data(), static_cast<int>(exact.size()), &payload_offset,
                                        &nal_type_offset, &header, &suid, &more);
    }
    Outcome Result() const {
        return {header.payload_type, header.payload_size, header.payload_index, payload_offset, suid, more};
    }
};

}  // namespace test

#endif
