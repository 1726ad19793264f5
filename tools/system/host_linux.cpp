#include <signal.h>

#include <csignal>

#include "tools/system/interrupt.h"

namespace kestvox {
namespace {

constexpr int Ending[] = {SIGINT, SIGTERM, SIGHUP};
constexpr int Unwanted[] = {SIGPIPE, SIGXFSZ};  // of writes, which tell of it, too
constexpr int StatusOfSignals = 128;

volatile std::sig_atomic_t received = 0;

void OnSignal(int number) {
    received = number;
}

// A call that waits comes back with EINTR.
void Handle(int number, void (*handler)(int)) {
    struct sigaction action {};
    sigaction(number, nullptr, &action);
    if (action.sa_handler != SIG_IGN || handler != OnSignal) {
        action = {};
        action.sa_handler = handler;
        sigaction(number, &action, nullptr);
    }
}

}  // namespace

int InterruptStatus() {
    return received == 0 ? 0 : StatusOfSignals + received;
}

InterruptGuard::InterruptGuard() {
    received = 0;
    for (const int number : Ending) {
        Handle(number, OnSignal);
    }
    for (const int number : Unwanted) {
        Handle(number, SIG_IGN);
    }
}

InterruptGuard::~InterruptGuard() {
    for (const int number : Ending) {
        struct sigaction action {};
        sigaction(number, nullptr, &action);
        if (action.sa_handler == OnSignal) {
            Handle(number, SIG_DFL);
        }
    }
}

}  // namespace kestvox
