#include "support/trace_capture.h"

namespace test {

TraceCapture *TraceCapture::listening_ = nullptr;

TraceCapture::TraceCapture(int level) : outer_(listening_), level_before_(g_hH265LibDbg->nMaxLevel) {
    g_hH265LibDbg->nMaxLevel = level;
    Listen();
}

void TraceCapture::Listen() {
    listening_ = this;
    DbgTraceSetSink(
        [](const DbgTraceMessage *message, void *user) {
            static_cast<TraceCapture *>(user)->messages_.push_back({message->channel, message->level,
                                                                    message->function, message->file,
                                                                    message->line, message->text});
        },
        this);
}

TraceCapture::~TraceCapture() {
    listening_ = nullptr;
    DbgTraceSetSink(nullptr, nullptr);
    if (outer_ != nullptr)
        outer_->Listen();
    if (g_hH265LibDbg != nullptr)
        g_hH265LibDbg->nMaxLevel = level_before_;
}

std::vector<std::string> TraceCapture::Texts(int level) const {
    std::vector<std::string> texts;
    for (const TracedMessage &message : messages_) {
        if (message.channel == "H265LIB" && message.level == level)
            texts.push_back(message.text);
    }
    return texts;
}

std::vector<std::string> TraceCapture::Assertions() const {
    std::vector<std::string> texts;
    for (const TracedMessage &message : messages_) {
        if (message.channel == "ASSERT")
            texts.push_back(message.text);
    }
    return texts;
}

std::string AssertionOf(const std::string &expression) {
    return "Assertion failed: " + expression + "\n";
}

}  // namespace test
