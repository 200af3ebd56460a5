// Two threads on records of their own, beside one: what is lost to locks or to memory they share. What the
// machine itself loses shows in the same with arithmetic alone.

#include <atomic>
#include <memory>
#include <thread>

#include "h265.h"
#include "operation.h"
#include "samples.h"

namespace bench {

namespace {

constexpr int kRounds = 2000;

// What arrives with a picture: an SPS that comes again, and a slice.
class Picture {
 public:
    Picture()
        : sps_nal_(SliceHeaders().front().parameter_sets[1]),
          pps_nal_(SliceHeaders().front().parameter_sets[2]),
          slice_nal_(SliceHeaders().front().nal) {
        H265Lib_Parse_pps_nal(pps_nal_.data(), static_cast<int>(pps_nal_.size()), pps_.get());
    }
    bool Run() {
        return H265Lib_Parse_sps_nal(sps_nal_.data(), sps_nal_.size(), sps_.get()) != FALSE &&
               H265Lib_Parse_slice_header_nal(slice_nal_.data(), static_cast<int>(slice_nal_.size()),
                                              sps_.get(), pps_.get(), &slice_) != FALSE;
    }

 private:
    Bytes sps_nal_, pps_nal_, slice_nal_;
    std::unique_ptr<sps_h265_t> sps_ = std::make_unique<sps_h265_t>();
    std::unique_ptr<pps_h265_t> pps_ = std::make_unique<pps_h265_t>();
    ssh_h265_t slice_{};
};

class Arithmetic {
 public:
    bool Run() {
        for (int i = 0; i < 100; i++)
            benchmark::DoNotOptimize(value_ = value_ * 1664525 + 1013904223);
        return true;
    }

 private:
    unsigned int value_ = 1;
};

template <typename Work>
bool RunRounds(Work &work) {
    bool well = true;
    for (int i = 0; i < kRounds; i++)
        well = work.Run() && well;
    return well;
}

// A second thread, which works whenever the first says so. It waits in a loop: waking it would be measured,
// too.
template <typename Work>
class Partner {
 public:
    Partner() : thread_([this] { Serve(); }) {}
    Partner(const Partner &) = delete;
    Partner &operator=(const Partner &) = delete;
    ~Partner() {
        turn_ = kStop;
        thread_.join();
    }
    void Start() { turn_ = kWork; }
    bool Await() {
        while (turn_ != kIdle) {
        }
        return well_;
    }

 private:
    enum Turn : int { kIdle, kWork, kStop };

    void Serve() {
        Work work;
        for (;;) {
            const int turn = turn_;
            if (turn == kStop)
                return;
            if (turn == kWork) {
                well_ = RunRounds(work);
                turn_ = kIdle;
            }
        }
    }

    std::atomic<int> turn_{kIdle};
    bool well_ = true;
    std::thread thread_;
};

template <typename Work>
void AddPair(const std::string &name) {
    Add(name + "_one/ours", [] {
        return [work = std::make_shared<Work>()] { return RunRounds(*work); };
    })->UseRealTime();
    Add(name + "_two/ours", [] {
        return [work = std::make_shared<Work>(), partner = std::make_shared<Partner<Work>>()] {
            partner->Start();
            const bool well = RunRounds(*work);
            return partner->Await() && well;
        };
    })->UseRealTime();
}

}  // namespace

void AddThreads() {
    AddPair<Picture>("threads/picture");
    AddPair<Arithmetic>("threads/arithmetic");
}

}  // namespace bench
