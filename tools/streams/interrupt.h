// The wish of the user, told with Ctrl+C, that the command ends.
#pragma once

namespace kestvox {

// Whether the user wants the command to end; reset when a command begins.
bool IsInterrupted();

// Notes interrupts from the user instead of dying of them.
class InterruptGuard {
public:
    InterruptGuard();
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

private:
    void (*previous_)(int);
};

}  // namespace kestvox
