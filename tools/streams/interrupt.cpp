#include "tools/streams/interrupt.h"

#include <csignal>

namespace kestvox {
namespace {

volatile std::sig_atomic_t interrupted = 0;

void OnInterrupt(int) {
    interrupted = 1;
}

}  // namespace

bool IsInterrupted() {
    return interrupted != 0;
}

InterruptGuard::InterruptGuard() : previous_(std::signal(SIGINT, OnInterrupt)) {
    interrupted = 0;
}

InterruptGuard::~InterruptGuard() {
    std::signal(SIGINT, previous_);
}

}  // namespace kestvox
