// The trace service as any library uses it: _DoDbgInit, _DoDbgUninitEx, _DoDbgPrintEx, _DoDbgPrintBuffer,
// _DoAssert, _DoTextAssert, DbgTraceSetSink.

#include <cstring>
#include <string>

#include "dbgtrace.h"
#include "support/check.h"
#include "support/exact_buffer.h"
#include "support/target.h"

namespace {

using fuzz::Bytes;
using fuzz::ExactBuffer;
using fuzz::FuzzInput;

constexpr char kFile[] = "trace_service.cpp";

void ReadText(const DbgTraceMessage *message, void *user) {
    FUZZ_CHECK(std::strlen(message->text) < DBGTRACE_MESSAGE_SIZE);
    ++*static_cast<int *>(user);
}

// A text of exactly its size, its zero included. A long one now and then, so that messages are cut.
ExactBuffer Text(FuzzInput *input) {
    Bytes text = input->Take(input->Below(48));
    if (input->Byte() == 0xFF)
        text.insert(text.end(), input->Below(3 * DBGTRACE_MESSAGE_SIZE), 'x');
    text.push_back('\0');
    return ExactBuffer(text);
}

const char *AsText(ExactBuffer *text) {
    return reinterpret_cast<const char *>(text->data());
}

// Few names, so that the table of channels does not fill up before the rest has been tried.
void OpenChannel(FuzzInput *input, HDBG *channel) {
    static constexpr const char *kNames[] = {"ONE",
                                             "TWO",
                                             "",
                                             "H265LIB",
                                             "A NAME OF THIRTY-ONE BYTES, FULL",
                                             "A NAME THAT IS LONGER THAN ANY CHANNEL CAN HAVE"};
    constexpr uint32_t kCount = sizeof kNames / sizeof kNames[0];
    const uint32_t choice = input->Below(256);
    ExactBuffer any = Text(input);
    const char *const name = choice == 255 ? nullptr : choice == 254 ? AsText(&any) : kNames[choice % kCount];
    const BOOL opened = _DoDbgInit(name, channel);
    FUZZ_CHECK((opened != FALSE) == (*channel != nullptr));
    if (opened)
        FUZZ_CHECK((*channel)->nMaxLevel == DBGTRACE_DEFAULT_LEVEL);
}

void Print(FuzzInput *input, HDBG channel) {
    ExactBuffer text = Text(input);
    const int level = static_cast<int>(input->Below(10));
    const int line = static_cast<int>(input->Number());
    switch (input->Below(4)) {
        case 0:
            _DoDbgPrintEx(channel, level, __func__, kFile, line, "%s|%d|%lu|%p\n", AsText(&text), level,
                          static_cast<unsigned long>(input->Bits(64)), static_cast<void *>(channel));
            break;
        case 1: {
            ExactBuffer bytes(input->Take(input->Below(100)));
            _DoDbgPrintBuffer(channel, level, input->Byte() == 0xFF ? nullptr : bytes.data(), bytes.size(),
                              AsText(&text), __func__, kFile, line);
            break;
        }
        case 2:
            _DoAssert(AsText(&text), __func__, kFile, line);
            break;
        default:
            _DoTextAssert(__func__, kFile, line, AsText(&text));
            break;
    }
}

// A handle that this service has not given away: nothing happens.
void PrintOnForeignHandle(FuzzInput *input, const int *messages) {
    const int before = *messages;
    tagHDBG foreign = {input->Number(), DBGTRACE_DEFAULT_LEVEL};
    HDBG handle = &foreign;
    _DoDbgPrintEx(handle, DBGTRACE_DEFAULT_LEVEL, __func__, kFile, __LINE__, "not to be seen\n");
    _DoDbgPrintBuffer(handle, DBGTRACE_DEFAULT_LEVEL, nullptr, 0, "not to be seen", __func__, kFile,
                      __LINE__);
    FUZZ_CHECK(*messages == before);
    _DoDbgUninitEx(&handle, __func__, kFile, __LINE__);
    FUZZ_CHECK(handle == nullptr);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    FuzzInput input(data, size);
    int messages = 0;
    const bool to_standard_error = input.Byte() >= 224;
    DbgTraceSetSink(to_standard_error ? nullptr : ReadText, &messages);
    while (!input.IsUsedUp()) {
        HDBG channel = nullptr;
        OpenChannel(&input, &channel);
        if (channel != nullptr)
            channel->nMaxLevel = static_cast<int>(input.Below(10));
        for (uint32_t prints = input.Below(4); prints > 0; prints--)
            Print(&input, channel);
        if (input.Below(8) == 0)
            PrintOnForeignHandle(&input, &messages);
        _DoDbgUninitEx(&channel, __func__, kFile, __LINE__);
        FUZZ_CHECK(channel == nullptr);
    }
    DbgTraceSetSink(nullptr, nullptr);
    return 0;
}
