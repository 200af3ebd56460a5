// User data registered by ITU-T Recommendation T.35, clause D.2.6: the messages that ATSC and DVB identify by
// four characters behind country and provider code.

#ifndef H264_REGISTERED_USER_DATA_H
#define H264_REGISTERED_USER_DATA_H

#include <cstdint>

#include "sei_reader.h"

namespace h264 {

constexpr uint32_t kIdentifierGA94 = 0x47413934;  // ATSC A/53: captions, bar data
constexpr uint32_t kIdentifierDTG1 = 0x44544731;  // active format description

struct RegisteredUserData {
    SEI_message_t header;
    unsigned char itu_t_t35_country_code;
    uint16_t itu_t_t35_provider_code;
    uint32_t user_identifier;
};

// Goes to the next message of this kind that is long enough for the fields above. The reader then stands
// behind them.
bool NextRegisteredUserData(SeiReader *reader, RegisteredUserData *user_data);

}  // namespace h264

#endif
