#include "reading/aud.h"

#include "reading/payload.h"
#include "unit_error.h"

namespace h265tool {

aud_h265_t ReadAud(const NalUnit &unit) {
    aud_h265_t aud{};
    aud.nal_type = kAud;
    PayloadStart<8> payload(unit);
    if (GetNextNBitsAsUint8(payload.bits(), 3, &aud.pic_type) != 0)
        throw UnitError("cannot parse pic_type.");
    return aud;
}

}  // namespace h265tool
