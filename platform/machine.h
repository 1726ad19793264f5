// The machine: what the processes of one computer share.
//
// Registry, event log, named objects, shared data sections and simulated cards live in machine
// regions. A process has a private machine unless it names one (UseMachine, or the environment
// variable KESTVOX_MACHINE); processes that name the same one share every region. The regions of a
// named machine are files below /dev/shm and live until the host restarts or they are removed.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace platform {

// Joins the machine of that name (letters, digits, '-', '_'; at most 64), or a fresh private one for
// an empty name. Every region is mapped anew on next use, so nothing that lives in a region may be
// open. False when the name is bad or the regions cannot be made.
bool UseMachine(const std::string& name);

// The name in use; empty for a private machine.
const std::string& MachineName();

// Deletes a named machine's regions. Processes that still use it keep what they have mapped.
bool RemoveMachine(const std::string& name);

// A lock in a region, for all processes. When its owner dies the next one gets it (the data it
// guards may be half changed: keep critical sections short and their steps in a safe order).
// Satisfies BasicLockable; not recursive.
class SharedMutex {
public:
    void Initialize();  // once, when the region is created
    void lock();
    void unlock();

private:
    pthread_mutex_t mutex_;
};

// Identifies a process across reuse of its number.
struct ProcessIdentity {
    uint32_t Id;         // 0: nobody
    uint64_t StartTime;  // in the host's clock ticks since boot
};
ProcessIdentity CurrentProcess();
bool IsAlive(const ProcessIdentity& process);

// Maps the region `name` of the machine in use and answers its address, which stays the same in this
// process until the next UseMachine. All calls must ask for the same size.
//
// A new region is zero-filled. Then `create` runs once, before any other process can see the region; it
// must not map another region. The child of a fork shares what its parent had mapped, on a private machine
// too. Never fails: when the memory cannot be had, the process ends with a message.
void* MapMachineRegion(const char* name, size_t size, void (*create)(void* memory));

// A region that holds one T, which must be valid when zero-filled and then Initialize()d.
template <typename T>
class MachineRegion {
public:
    explicit constexpr MachineRegion(const char* name) : name_(name) {}
    T& operator*() const { return *Get(); }
    T* operator->() const { return Get(); }

private:
    T* Get() const {
        return static_cast<T*>(
            MapMachineRegion(name_, sizeof(T), [](void* memory) { static_cast<T*>(memory)->Initialize(); }));
    }
    const char* name_;
};

}  // namespace platform
