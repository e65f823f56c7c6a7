#include "client/cli/input/Interruption.h"

#include <csignal>

namespace ovsync {
namespace input {

namespace {

std::atomic<bool> wished(false);
static_assert(std::atomic<bool>::is_always_lock_free, "only such an object may be written by a signal handler");

const int Signals[] = {SIGINT, SIGTERM, SIGHUP};

void OnSignal(int /*signal*/) {
    wished = true;
}

}  // namespace

Interruption::Interruption() {
    wished = false;
    for (const int signal : Signals) {
        struct sigaction before {};
        sigaction(signal, nullptr, &before);
        if (before.sa_handler == SIG_IGN) {
            continue;
        }
        struct sigaction action {};
        action.sa_handler = &OnSignal;
        action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
        sigaction(signal, &action, nullptr);
    }
}

Interruption::~Interruption() {
    for (const int signal : Signals) {
        struct sigaction now {};
        sigaction(signal, nullptr, &now);
        if (now.sa_handler == &OnSignal) {
            now.sa_handler = SIG_DFL;
            sigaction(signal, &now, nullptr);
        }
    }
}

const std::atomic<bool>& Interruption::IsRequested() {
    return wished;
}

}  // namespace input
}  // namespace ovsync
