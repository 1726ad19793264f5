#include <signal.h>
#include <time.h>
#include <unistd.h>

#include <mutex>

#include "platform/device.h"
#include "platform/inspect.h"
#include "platform/machine.h"
#include "platform/time_source.h"
#include "simulator/machine/host.h"

namespace simulator::host {
namespace {

struct SharedLock {
    platform::SharedMutex Mutex;
    void Initialize() { Mutex.Initialize(); }
};
constexpr platform::MachineRegion<SharedLock> LockRegion("simulator-lock");

class TimerAdapter final : public platform::TimeSource {
public:
    Timer* Target = nullptr;

    DWORD Milliseconds() override { return Target->Milliseconds(); }
    void Sleep(DWORD milliseconds) override { Target->Sleep(milliseconds); }
};
TimerAdapter timerAdapter;

}  // namespace

struct Lock::State {
    std::mutex Mutex;
};
Lock::Lock() : state_(std::make_unique<State>()) {}
Lock::~Lock() = default;
void Lock::lock() {
    state_->Mutex.lock();
}
void Lock::unlock() {
    state_->Mutex.unlock();
}

void* MapMachine(size_t size, void (*create)(void* memory)) {
    return platform::MapMachineRegion("simulator", size, create);
}

void LockMachine() {
    LockRegion->Mutex.lock();
}
void UnlockMachine() {
    LockRegion->Mutex.unlock();
}

bool OthersMayJoin() {
    return !platform::MachineName().empty();
}

Process CurrentProcess() {
    const platform::ProcessIdentity identity = platform::CurrentProcess();
    return {identity.Id, identity.StartTime};
}

bool IsAlive(const Process& process) {
    return platform::IsAlive({process.Id, process.StartTime});
}

void Die() {
    kill(getpid(), SIGKILL);
    for (;;) {
        pause();
    }
}

int64_t Nanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000000000 + now.tv_nsec;
}

void Nap(int64_t nanoseconds) {
    const timespec length{.tv_sec = nanoseconds / 1000000000, .tv_nsec = nanoseconds % 1000000000};
    nanosleep(&length, nullptr);
}

void InstallDriver(device::Driver* driver) {
    platform::InstallDeviceDriver(driver);
}

void InstallTimer(Timer* timer) {
    if (timer) {
        timerAdapter.Target = timer;
    }
    platform::InstallTimeSource(timer ? &timerAdapter : nullptr);
}

Thread CurrentThread() {
    return platform::CurrentThreadReference();
}

uint64_t CurrentThreadId() {
    return GetCurrentThreadId();
}

uint64_t SharedMutexWaits() {
    return platform::NamedMutexWaits();
}

void QueueCall(const Thread& thread, device::ProcedureCall routine, ULONG_PTR first) {
    // The call is lost when the thread has ended, as in a kernel.
    platform::QueueProcedureCall(std::static_pointer_cast<platform::ThreadObject>(thread), routine, first, 0,
                                 0);
}

bool WaitUntilQuiet(DWORD milliseconds) {
    return platform::WaitUntilQuiet(milliseconds);
}

}  // namespace simulator::host
