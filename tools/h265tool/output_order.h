// Numbers pictures in the order of their output.

#ifndef H265TOOL_OUTPUT_ORDER_H
#define H265TOOL_OUTPUT_ORDER_H

#include <cstdint>
#include <set>
#include <utility>

namespace h265tool {

// Takes pictures in decoding order and counts them, from 0 on, in output order: by picture order count within
// a coded video sequence, and the sequences one after the other. A picture is numbered as soon as its place
// is certain, that is, when as many later ones as may be reordered have come ("bumping", clause C.5.2): at no
// time more than sps_max_num_reorder_pics are kept.
class OutputOrder {
 public:
    // Receives the key that a picture was added with, and its number.
    template <typename Numbered>
    void Add(uint64_t key, int64_t PicOrderCntVal, uint64_t max_num_reorder_pics, Numbered numbered) {
        waiting_.emplace(PicOrderCntVal, key);
        while (waiting_.size() > max_num_reorder_pics)
            NumberFirst(numbered);
    }

    // The end of a coded video sequence: numbers all pictures that are left.
    template <typename Numbered>
    void Finish(Numbered numbered) {
        while (!waiting_.empty())
            NumberFirst(numbered);
    }

 private:
    template <typename Numbered>
    void NumberFirst(Numbered numbered) {
        numbered(waiting_.begin()->second, next_++);
        waiting_.erase(waiting_.begin());
    }

    std::set<std::pair<int64_t, uint64_t>> waiting_;  // by picture order count
    uint64_t next_ = 0;
};

}  // namespace h265tool

#endif
