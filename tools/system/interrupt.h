// The wish of the user, or of the system, that the command ends.
#pragma once

namespace kestvox {

// The exit status of a command that was told to end: 130 by Ctrl+C (SIGINT), 143 by SIGTERM, 129 by SIGHUP or
// a window that closes. 0 until then.
int InterruptStatus();
inline bool IsInterrupted() {
    return InterruptStatus() != 0;
}

// Notes that wish, from its beginning on, instead of dying of it; a signal that the process was started to
// ignore stays ignored. A write that nobody takes any more, or that has become too long, fails and does not
// kill.
class InterruptGuard {
public:
    InterruptGuard();
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;
};

}  // namespace kestvox
