// The parameter sets that a stream has carried so far, by id.

#ifndef H265TOOL_PARAMETER_SETS_H
#define H265TOOL_PARAMETER_SETS_H

#include <array>
#include <cstdint>
#include <memory>

#include "h265.h"

namespace h265tool {

constexpr uint64_t kMaxSpsId = 15;  // clauses 7.4.3.2.1 and 7.4.3.3.1
constexpr uint64_t kMaxPpsId = 63;

// The sets that a slice refers to.
struct ActiveSets {
    const sps_h265_t &sps;
    const pps_h265_t &pps;

    // The SPS as the library needs it to read slice_segment_address: see SpsForSlices.
    const sps_h265_t &sps_for_slices;
};

// A set that comes again takes the place of the earlier one, also when it cannot be parsed: a slice that
// refers to it cannot be read then. All functions throw UnitError; references are valid until the next set.
class ParameterSets {
 public:
    void Keep(const sps_h265_t &sps);
    void Keep(const pps_h265_t &pps);

    // A set of this id came that could not be parsed. An id that no set can have is ignored.
    void MarkUnreadableSps(uint64_t id);
    void MarkUnreadablePps(uint64_t id);

    // The sets of a slice, from its slice_pic_parameter_set_id.
    ActiveSets Activated(uint64_t slice_pic_parameter_set_id) const;

    // Without an error: null when there is none, or when there are several.
    const sps_h265_t *FindSps(uint64_t id) const;
    const sps_h265_t *OnlySps() const;

 private:
    struct Sps {
        sps_h265_t sps;
        sps_h265_t for_slices;
    };

    template <typename Set>
    struct Slot {
        std::unique_ptr<Set> set;  // none: never carried, or unreadable
        bool unreadable = false;
    };

    std::array<Slot<Sps>, kMaxSpsId + 1> sps_;
    std::array<Slot<pps_h265_t>, kMaxPpsId + 1> pps_;
};

// A copy whose picture is (PicSizeInCtbsY - 1) x 1 coding tree blocks. The library reads
// slice_segment_address with floor(Log2(PicSizeInCtbsY)) + 1 bits, H.265 codes it with
// Ceil(Log2(PicSizeInCtbsY)): floor(Log2(n - 1)) + 1 is Ceil(Log2(n)) for all n from 2 on. (A picture of one
// coding tree block has no slice segments but the first.) The rest of a slice header does not depend on the
// size of the picture.
sps_h265_t SpsForSlices(const sps_h265_t &sps);

}  // namespace h265tool

#endif
