#include "registered_user_data.h"

namespace h264 {
namespace {

constexpr unsigned int kPayloadType = 4;  // user_data_registered_itu_t_t35

// A big-endian number of the payload.
template <typename Number>
bool ReadNumber(SeiReader *reader, Number *number) {
    uint64_t value = 0;
    for (size_t i = 0; i < sizeof(Number); i++) {
        unsigned char byte = 0;
        if (!NextByte(reader, &byte))
            return false;
        value = value << 8 | byte;
    }
    *number = static_cast<Number>(value);
    return true;
}

}  // namespace

bool NextRegisteredUserData(SeiReader *reader, RegisteredUserData *user_data) {
    unsigned int payload_type = 0;
    while (NextMessage(reader, &user_data->header, &payload_type)) {
        if (payload_type == kPayloadType && ReadNumber(reader, &user_data->itu_t_t35_country_code) &&
            ReadNumber(reader, &user_data->itu_t_t35_provider_code) &&
            ReadNumber(reader, &user_data->user_identifier))
            return true;
    }
    return false;
}

}  // namespace h264
