// Finds out what comes to stand in place of which NAL units.

#ifndef H265TOOL_EDIT_PLANNER_H
#define H265TOOL_EDIT_PLANNER_H

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "edit/request.h"
#include "edit/unit_replacer.h"
#include "h265.h"
#include "nal_unit.h"
#include "parameter_sets.h"
#include "reading/unit_reader.h"

namespace h265tool {

struct EditPlan {
    Replacements replacements;       // of NAL units that change
    std::vector<std::string> notes;  // what the user should know
};

// Takes the NAL units of a stream in order. Everything is rewritten, read again and compared here, so that
// nothing has to be written when something goes wrong. Take and Finish throw UnitError for a stream that does
// not allow what is asked for, and UsageError when it lies in the HRD file.
class EditPlanner {
 public:
    explicit EditPlanner(const EditRequest &request) : request_(request) {}  // has to outlive the object

    void Take(const NalUnit &unit);
    EditPlan Finish();

    // How many bytes Take needs behind the start code of a NAL unit of this type.
    static size_t HeadSize(unsigned int nal_unit_type) { return UnitReader::HeadSize(nal_unit_type); }

 private:
    // A SEI NAL unit: which SPS it depends on is known at the first slice behind it.
    struct WaitingSei {
        uint64_t number;
        NalUnit unit;
        Sei sei;
    };

    void TakeParameterSet(const NalUnit &unit, const UnitContent &content);
    void TakeVps(const NalUnit &unit, const vps_h265_t &vps);
    void TakeSps(const NalUnit &unit, const sps_h265_t &sps);
    void EndWaiting(const NalUnit &unit, const UnitContent &content);
    void TakeSei(WaitingSei *waiting, const sps_h265_t &sps);
    void Replace(uint64_t number, const NalUnit &unit, NalUnit replacement);
    void Note(std::string note);

    const EditRequest &request_;
    UnitReader reader_;
    EditPlan plan_;
    uint64_t units_ = 0;                                                 // before the current one
    std::array<std::unique_ptr<sps_h265_t>, kMaxSpsId + 1> edited_sps_;  // by id, as they are afterwards
    std::vector<WaitingSei> waiting_;
    bool has_sps_ = false;
    bool has_pic_timing_ = false;
};

}  // namespace h265tool

#endif
