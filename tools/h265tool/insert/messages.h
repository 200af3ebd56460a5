// Builds what an access unit is to get.

#ifndef H265TOOL_INSERT_MESSAGES_H
#define H265TOOL_INSERT_MESSAGES_H

#include <utility>
#include <vector>

#include "insert/access_units.h"
#include "insert/request.h"
#include "rate.h"

namespace h265tool {

using NalUnitBytes = std::vector<unsigned char>;  // start code included

class MessageBuilder {
 public:
    // Throws UsageError when the rate is not known or does not fit, and UnitError when an access unit cannot
    // have what is asked for. Both arguments have to outlive the object.
    MessageBuilder(const Request &request, const std::vector<AccessUnit> &access_units);

    // Whether an access unit gets one: those that are there have precedence unless they are replaced.
    bool GetsDelimiter(const AccessUnit &access_unit) const;
    bool Gets(SeiKind kind, const AccessUnit &access_unit) const;

    NalUnitBytes Delimiter(const AccessUnit &access_unit) const;
    std::vector<NalUnitBytes> Sei(const AccessUnit &access_unit) const;
    NalUnitBytes EndOfSequence() const;

    // How many access units keep what they have, by option.
    std::vector<std::pair<const char *, size_t>> Kept(const std::vector<AccessUnit> &access_units) const;

    // How many byte pairs come too late for the last picture.
    uint64_t CaptionsBehind(const std::vector<AccessUnit> &access_units) const;

 private:
    void FindRate(const std::vector<AccessUnit> &access_units);
    void CheckTimeCode();
    void CheckCaptions();
    void CheckPicTiming(const AccessUnit &access_unit) const;

    uint64_t FirstCaptionFrame(uint64_t picture) const;
    unsigned char PicStruct(const AccessUnit &access_unit) const;
    NalUnitBytes PicTiming(const AccessUnit &access_unit) const;
    NalUnitBytes TimeCodeOf(const AccessUnit &access_unit) const;
    NalUnitBytes ActiveFormat() const;
    NalUnitBytes Captions(const AccessUnit &access_unit) const;
    NalUnitBytes PrecisionTime(const AccessUnit &access_unit) const;

    const Request &request_;
    Rate rate_{25, 1};                 // for what counts per picture
    TimeCodeCount time_codes_{25, 0};  // at this rate
    int cc_count_ = 0;
};

}  // namespace h265tool

#endif
