#include "rewriting/interruption.h"

#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>

namespace h265tool {
namespace {

constexpr std::array kSignals = {SIGHUP, SIGINT, SIGTERM};

std::atomic<const char *> to_remove = nullptr;
static_assert(std::atomic<const char *>::is_always_lock_free);  // a signal handler may use it

void RemoveAndEnd(int number) {
    if (const char *const path = to_remove; path != nullptr)
        unlink(path);
    raise(number);  // ends the program once this returns: the handling was for one time
}

void Handle(void (*handler)(int), void (*instead_of)(int)) {
    for (const int number : kSignals) {
        struct sigaction before {};
        sigaction(number, nullptr, &before);
        if (before.sa_handler != instead_of)
            continue;  // ignored, behind nohup
        struct sigaction action {};
        action.sa_handler = handler;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        sigaction(number, &action, nullptr);
    }
}

}  // namespace

RemovalWhenInterrupted::RemovalWhenInterrupted(const std::string &path) {
    to_remove = path.c_str();
    Handle(RemoveAndEnd, SIG_DFL);
}

RemovalWhenInterrupted::~RemovalWhenInterrupted() {
    Handle(SIG_DFL, RemoveAndEnd);
    to_remove = nullptr;
}

}  // namespace h265tool
