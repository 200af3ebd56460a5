#include "json/put.h"

namespace h265tool {

Json ToJson(const aud_h265_t &aud) {
    Json json;
    PUT(json, aud, nal_type);
    PUT(json, aud, pic_type);
    return json;
}

}  // namespace h265tool
