#include "insert/scc.h"

#include <algorithm>
#include <charconv>
#include <sstream>
#include <string>

#include "text.h"

namespace h265tool {
namespace {

constexpr char kTitle[] = "Scenarist_SCC V1.0";

// SCC files count at 29.97 frames/s.
const TimeCodeCount kCount(30, 2);

class Reader {
 public:
    explicit Reader(const TimeCode &start) : start_(start) {}

    std::vector<CaptionPair> Read(std::istream &file) {
        for (std::string text; std::getline(file, text);) {
            line_++;
            if (line_ == 1 && text.starts_with("\xEF\xBB\xBF"))
                text.erase(0, 3);
            text.erase(text.find_last_not_of(" \t\r") + 1);
            if (line_ == 1 && text != kTitle)
                Fail(Text("an SCC file begins with \"", kTitle, "\""));
            if (line_ > 1 && !text.empty())
                ReadLine(text);
        }
        if (line_ == 0)
            throw SccError("it is empty");
        return pairs_;
    }

 private:
    [[noreturn]] void Fail(const std::string &reason) const {
        throw SccError(Text("line ", line_, ": ", reason));
    }

    void ReadLine(const std::string &text) {
        std::istringstream words(text);
        std::string word;
        words >> word;
        due_ = Frame(word);
        if (!(words >> word))
            Fail("no byte pairs behind the time code");
        do {
            pairs_.push_back(Pair(word));
        } while (words >> word);
    }

    uint64_t Frame(const std::string &word) {
        const std::optional<TimeCode> time_code = ParseTimeCode(word);
        if (!time_code.has_value())
            Fail(Text("\"", word, "\" is no time code (HH:MM:SS:FF or HH:MM:SS;FF)"));
        if (!kCount.Has(*time_code))
            Fail(Text("29.97 frames/s have no time code ", word));
        TimeCode start = start_;
        start.drop_frame = time_code->drop_frame;
        const uint64_t number = kCount.FrameNumber(*time_code);
        const uint64_t first = kCount.FrameNumber(start);
        if (number < first)
            Fail(Text(word, " is before the start of the captions"));
        if (number - first < last_time_code_)
            Fail(Text(word, " is before the time code of an earlier line"));
        last_time_code_ = number - first;
        return std::max(last_time_code_, due_);
    }

    CaptionPair Pair(const std::string &word) {
        unsigned int bytes = 0;
        const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), bytes, 16);
        if (word.size() != 4 || error != std::errc{} || end != word.data() + word.size())
            Fail(Text("\"", word, "\" is no byte pair (four hexadecimal digits)"));
        return {due_++, static_cast<unsigned char>(bytes >> 8), static_cast<unsigned char>(bytes & 0xFF)};
    }

    TimeCode start_;
    std::vector<CaptionPair> pairs_;
    unsigned int line_ = 0;
    uint64_t last_time_code_ = 0;
    uint64_t due_ = 0;  // the first frame that is free
};

}  // namespace

std::vector<CaptionPair> ReadScc(std::istream &file, const TimeCode &start) {
    return Reader(start).Read(file);
}

}  // namespace h265tool
