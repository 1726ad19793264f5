#include "simulator/machine/timeline.h"

#include <algorithm>

#include "simulator/requests/request_hold.h"

namespace simulator {
namespace {

constexpr int64_t Millisecond = 1000000;
constexpr int64_t SleepNap = 50000;  // real time that a sleep takes in stepped time
constexpr int64_t IdlePeriod = 10 * Millisecond;
constexpr DWORD QuietMilliseconds = 30000;  // real time, after which a thread that gets calls is stuck
constexpr DWORD HeldMilliseconds = 3;       // ... while a test holds a thread, which it may be waiting for

thread_local bool justReadTimer = false;

bool IsStepped() {
    const host::MachineGuard guard;
    return Machine().Stepped;
}

}  // namespace

Timeline::Timeline(ProcessSide& side) : side_(side), stepped_(IsStepped()) {
    if (!stepped_ || host::OthersMayJoin()) {
        thread_ = std::thread([this] { Run(); });
    }
}

Timeline::~Timeline() {
    ending_ = true;
    if (thread_.joinable()) {
        thread_.join();
    }
}

void Timeline::Run() {
    while (!ending_) {
        bool busy = false;
        {
            const host::MachineGuard guard;
            if (!stepped_ || OthersAttached()) {
                side_.CatchUp(Machine().Now());
                busy = stepped_ || side_.AnyUnderWay();
            }
        }
        side_.Completions.Deliver();
        host::Nap(busy ? Millisecond : IdlePeriod);
    }
}

// While a test holds a thread, others may be stuck behind it: they are waited for in vain once.
void Timeline::AwaitDriver() {
    for (DWORD waited = 0; waited < QuietMilliseconds; waited += HeldMilliseconds) {
        const unsigned hold = RequestHold::UnderWay();
        if (host::WaitUntilQuiet(hold != 0 && hold == stuckBehind_ ? 0 : HeldMilliseconds)) {
            return;
        }
        if (hold != 0) {
            stuckBehind_ = hold;
            return;
        }
    }
}

bool Timeline::MoveTo(int64_t target, bool toBufferEnd) {
    bool mayWait = false;
    {
        const host::MachineGuard guard;
        mayWait = !side_.OnCompletionThread();
    }
    std::unique_lock<host::Lock> turn(turn_, std::defer_lock);
    if (mayWait) {
        turn.lock();
        AwaitDriver();  // what requests set off before
    }
    for (;;) {
        bool arrived = false;
        bool ended = false;
        {
            const host::MachineGuard guard;
            MachineState& machine = Machine();
            const int64_t event = side_.NextEvent(machine.VirtualTime);
            arrived = event > target;
            machine.VirtualTime = std::max(machine.VirtualTime, std::min(event, target));
            ended = side_.CatchUp(machine.VirtualTime) > 0;
        }
        side_.Completions.Deliver();
        if (mayWait) {
            AwaitDriver();
        }
        if (toBufferEnd && ended) {
            return true;
        }
        if (arrived) {
            return false;
        }
    }
}

bool Timeline::Advance(int64_t length, bool toBufferEnd) {
    if (!stepped_) {
        return false;
    }
    int64_t from = 0;
    {
        const host::MachineGuard guard;
        from = Machine().VirtualTime;
    }
    return MoveTo(from + length, toBufferEnd);
}

void Timeline::Stall(int64_t length) {
    if (stepped_) {
        Advance(length, false);
        return;
    }
    const int64_t end = host::Nanoseconds() + length;
    while (host::Nanoseconds() < end) {
        host::Nap(std::max<int64_t>(end - host::Nanoseconds(), 0));
    }
}

void Timeline::NoteRequest() {
    justReadTimer = false;
}

DWORD Timeline::Milliseconds() {
    int64_t now = 0;
    {
        const host::MachineGuard guard;
        now = Machine().Now();
    }
    if (stepped_ && justReadTimer) {
        const int64_t tick = (now / Millisecond + 1) * Millisecond;
        MoveTo(tick, false);
        now = tick;
    }
    justReadTimer = true;
    return static_cast<DWORD>(now / Millisecond);
}

void Timeline::Sleep(DWORD milliseconds) {
    justReadTimer = false;
    host::Nap(stepped_ ? SleepNap : milliseconds * Millisecond);
}

}  // namespace simulator
