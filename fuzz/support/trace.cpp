#include "support/trace.h"

#include <cstring>

#include "support/check.h"

namespace fuzz {
namespace {

// Reads the texts to their ends, so that a sanitizer sees one that has none.
void Read(const DbgTraceMessage *message, void *) {
    FUZZ_CHECK(std::strlen(message->text) < DBGTRACE_MESSAGE_SIZE);
    FUZZ_CHECK(std::strlen(message->channel) > 0 && std::strlen(message->function) > 0 &&
               std::strlen(message->file) > 0);
}

void SetLevels(int level) {
    static HDBG assertions = nullptr;
    if (assertions == nullptr)
        FUZZ_CHECK(_DoDbgInit("ASSERT", &assertions));
    assertions->nMaxLevel = level;
    g_hH265LibDbg->nMaxLevel = level;
}

}  // namespace

DiscardedTrace::DiscardedTrace(FuzzInput *input) {
    const uint8_t choice = input->Byte();
    DbgTraceSetSink(Read, nullptr);
    SetLevels(choice < 128 ? 0 : choice < 240 ? DBGTRACE_DEFAULT_LEVEL : choice % (kMostDetailedLevel + 1));
}

DiscardedTrace::~DiscardedTrace() {
    SetLevels(DBGTRACE_DEFAULT_LEVEL);
    DbgTraceSetSink(nullptr, nullptr);
}

}  // namespace fuzz
