// All that the simulator needs of the system it runs on. One source file per system implements it.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <memory>

#include "device/device_driver.h"

namespace simulator::host {

// A lock for the threads of this process. When the end of the process has stopped a thread that held it, the
// last thread does not wait for it. BasicLockable; not recursive.
class Lock {
public:
    Lock();
    ~Lock();
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    void lock();
    void unlock();

private:
    struct State;
    std::unique_ptr<State> state_;
};

// --- what the processes of a machine share -----------------------------------------------------

// The simulator's memory, the same for all processes of the machine. `create` runs once, on
// zero-filled memory that nobody else sees yet.
void* MapMachine(size_t size, void (*create)(void* memory));

// The lock of that memory: one for all processes, passes to the next when its owner dies, not
// recursive. MapMachine comes first.
void LockMachine();
void UnlockMachine();

class MachineGuard {
public:
    MachineGuard() { LockMachine(); }
    ~MachineGuard() { UnlockMachine(); }
    MachineGuard(const MachineGuard&) = delete;
    MachineGuard& operator=(const MachineGuard&) = delete;
};

bool OthersMayJoin();  // false when the machine is this process's own

// Identifies a process across reuse of its number. Valid in other processes; Id 0 is nobody.
struct Process {
    uint32_t Id;
    uint64_t StartTime;
    bool operator==(const Process&) const = default;
};
Process CurrentProcess();
bool IsAlive(const Process& process);
[[noreturn]] void Die();  // as when the process is killed from outside: nothing is cleaned up

// --- time --------------------------------------------------------------------------------------

int64_t Nanoseconds();  // never goes back, the same for all processes
void Nap(int64_t nanoseconds);

// --- taking the kernel driver's place ------------------------------------------------------------

// One at a time; null takes it away.
void InstallDriver(device::Driver* driver);

// What stands behind timeGetTime and Sleep in place of the system's clock.
class Timer {
public:
    virtual DWORD Milliseconds() = 0;
    virtual void Sleep(DWORD milliseconds) = 0;

protected:
    ~Timer() = default;
};
void InstallTimer(Timer* timer);

// --- completions -------------------------------------------------------------------------------

using Thread = std::shared_ptr<void>;  // stays valid after the thread has ended
Thread CurrentThread();
uint64_t CurrentThreadId();

// How often threads of this process have had to wait for a mutex that it shares with others, so far.
uint64_t SharedMutexWaits();

// Queues a procedure call with three arguments to the thread, as a kernel driver does. Never blocks.
void QueueCall(const Thread& thread, device::ProcedureCall routine, ULONG_PTR first);

// Waits until every queued call has run and its thread waits for more. Gives up, false, after
// `milliseconds` of real time.
bool WaitUntilQuiet(DWORD milliseconds);

}  // namespace simulator::host
