#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <csignal>

#include "tools/system/interrupt.h"
#include "tools/system/standard_streams.h"

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

// An open takes the lowest number that is free. What is open for reading refuses what is written to it.
void OccupyStandardStreams() {
    for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(number, F_GETFD) < 0) {
            open("/dev/null", number == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

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
