// A seq_parameter_set_rbsp( ) of a test, with everything that it nests.

#ifndef TESTS_SUPPORT_SPS_SYNTAX_H
#define TESTS_SUPPORT_SPS_SYNTAX_H

#include <string>
#include <vector>

#include "h265.h"
#include "support/syntax.h"

namespace test {

enum ScalingLists { kNoScalingLists, kDefaultScalingLists, kCodedScalingLists };

struct SpsExtensions {
    int range = 0;
    int multilayer = 0;
    int three_d = 0;
    int scc = 0;
    int four_bits = 0;
};

// What an SPS of a test consists of.
struct SpsShape {
    int max_sub_layers_minus1 = 0;
    int ordering_info = 1;
    int chroma_format_idc = 1;
    int conformance_window = 0;
    uint64_t log2_max_poc_lsb_minus4 = 4;
    ScalingLists scaling_lists = kNoScalingLists;
    int pcm = 0;
    int short_term_sets = 0;
    int long_term = 0;
    int long_term_pictures = 0;
    int vui = 0;
};

class SpsSyntax : public Syntax {
 public:
    explicit SpsSyntax(sps_h265_t *sps) : sps_(sps) {}

    // What the parser takes from the caller's record: the kind of set 0, the distances of predicted sets, and
    // the low delay flags of the HRD. A prefilled record needs this before it is parsed into.
    static void Prepare(sps_h265_t *sps);

    // An SPS without extensions.
    SpsSyntax &AddSps(const SpsShape &shape);

    // Its pieces: up to num_short_term_ref_pics_sets, up to sps_extension_present_flag, and an extension.
    SpsSyntax &AddUpToReferences(const SpsShape &shape);
    SpsSyntax &AddUpToExtensions(const SpsShape &shape);
    SpsSyntax &AddExtensions(const SpsExtensions &extensions);

    // The traces of level 7 between entry and exit, and the positions that the record keeps.
    const std::vector<std::string> &steps() const { return steps_; }
    int samples_position() const { return samples_position_; }
    int vui_position() const { return vui_position_; }
    int extension_position() const { return extension_position_; }

 private:
    int Step(const std::string &text);
    void AddPictureFormat(const SpsShape &shape);
    void AddOrdering(const SpsShape &shape);
    void AddCoding(const SpsShape &shape);
    void AddPredictedScalingLists();
    void AddReferences(const SpsShape &shape);
    void AddSet(int i);

    sps_h265_t *sps_;
    std::vector<std::string> steps_;
    int samples_position_ = 0;
    int vui_position_ = 0;
    int extension_position_ = 0;
};

}  // namespace test

#endif
