#include "diagnostics.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "h265.h"

namespace h265tool {
namespace {

constexpr int kError = 3;  // the level of errors

}  // namespace

Diagnostics::Diagnostics() {
    DbgTraceSetSink(
        [](const DbgTraceMessage *message, void *user) { static_cast<Diagnostics *>(user)->Take(*message); },
        this);
    if (g_hH265LibDbg != nullptr)
        g_hH265LibDbg->nMaxLevel = std::max(g_hH265LibDbg->nMaxLevel, kError);
}

Diagnostics::~Diagnostics() {
    DbgTraceSetSink(nullptr, nullptr);
}

void Diagnostics::Take(const DbgTraceMessage &message) {
    if (message.level > kError)
        std::fprintf(stderr, "%s %d %s: %s", message.channel, message.level, message.function, message.text);
    else if (first_error_.empty() && std::string_view(message.channel).ends_with("LIB"))  // H265LIB, H264LIB
        first_error_ = message.text;
}

std::string Diagnostics::FirstError() const {
    if (first_error_.empty())
        return "it could not be parsed";
    return first_error_.substr(0, first_error_.find_last_not_of('\n') + 1);
}

}  // namespace h265tool
