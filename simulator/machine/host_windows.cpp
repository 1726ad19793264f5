#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>

#include "simulator/attach.h"
#include "simulator/machine/host.h"
#include "simulator/windows/system_calls.h"

namespace simulator {
namespace {

constexpr size_t LongestName = 64;

bool IsGoodName(const std::string& name) {
    return name.size() <= LongestName && std::all_of(name.begin(), name.end(), [](unsigned char c) {
               return std::isalnum(c) != 0 || c == '-' || c == '_';
           });
}

[[noreturn]] void EndProcess(const char* what) {
    std::fprintf(stderr, "simulator: %s: error %lu\n", what, GetLastError());
    std::exit(3);
}

// Waits for a mutex; one whose owner has died comes as well.
void Own(HANDLE mutex) {
    WaitForSingleObject(mutex, INFINITE);
}

// What the process has of the machine that it is on.
struct MachineMapping {
    std::string Name;
    host::Lock OwnLock;
    HANDLE SharedLock = nullptr;
    HANDLE Section = nullptr;
    void* Memory = nullptr;
};

MachineMapping& Mapping() {
    static MachineMapping& mapping = *[] {
        const char* name = std::getenv("KESTVOX_MACHINE");
        auto* made = new MachineMapping;
        made->Name = name && IsGoodName(name) ? name : "";
        return made;
    }();
    return mapping;
}

// The name of a machine's object of that kind; empty for a machine of this process alone.
std::string ObjectName(const char* kind) {
    return Mapping().Name.empty() ? "" : "Kestrelvox simulator " + Mapping().Name + " " + kind;
}

HANDLE OpenLock() {
    const std::string name = ObjectName("lock");
    const HANDLE lock = CreateMutexA(nullptr, FALSE, name.empty() ? nullptr : name.c_str());
    return lock ? lock : (EndProcess("no lock"), nullptr);
}

HANDLE OpenSection(size_t size, bool* isNew) {
    const std::string name = ObjectName("memory");
    const HANDLE section =
        CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, static_cast<DWORD>(size),
                           name.empty() ? nullptr : name.c_str());
    *isNew = GetLastError() != ERROR_ALREADY_EXISTS;
    return section ? section : (EndProcess("no memory"), nullptr);
}

uint64_t StartTimeOf(HANDLE process) {
    FILETIME start{};
    FILETIME other{};
    GetProcessTimes(process, &start, &other, &other, &other);
    return static_cast<uint64_t>(start.dwHighDateTime) << 32 | start.dwLowDateTime;
}

}  // namespace

bool UseMachine(const std::string& name) {
    if (!IsGoodName(name)) {
        return false;
    }
    MachineMapping& mapping = Mapping();
    if (mapping.Memory) {
        UnmapViewOfFile(mapping.Memory);
        CloseHandle(mapping.Section);
        CloseHandle(mapping.SharedLock);
        mapping.Memory = nullptr;
    }
    mapping.Name = name;
    return true;
}

const std::string& MachineName() {
    return Mapping().Name;
}

namespace host {

// The system itself sees to it that a process which is ending waits for no critical section.
struct Lock::State {
    CRITICAL_SECTION Section;
};
Lock::Lock() : state_(std::make_unique<State>()) {
    InitializeCriticalSection(&state_->Section);
}
Lock::~Lock() {
    DeleteCriticalSection(&state_->Section);
}
void Lock::lock() {
    EnterCriticalSection(&state_->Section);
}
void Lock::unlock() {
    LeaveCriticalSection(&state_->Section);
}

void* MapMachine(size_t size, void (*create)(void* memory)) {
    MachineMapping& mapping = Mapping();
    if (!mapping.Memory) {
        mapping.SharedLock = OpenLock();
        Own(mapping.SharedLock);
        bool isNew = false;
        mapping.Section = OpenSection(size, &isNew);
        mapping.Memory = MapViewOfFile(mapping.Section, FILE_MAP_WRITE, 0, 0, size);
        if (!mapping.Memory) {
            EndProcess("no view of the memory");
        }
        if (isNew) {
            create(mapping.Memory);
        }
        ReleaseMutex(mapping.SharedLock);
    }
    return mapping.Memory;
}

// The mutex is a call to the kernel; a machine of one process does without.
void LockMachine() {
    MachineMapping& mapping = Mapping();
    mapping.Name.empty() ? mapping.OwnLock.lock() : Own(mapping.SharedLock);
}
void UnlockMachine() {
    MachineMapping& mapping = Mapping();
    if (mapping.Name.empty()) {
        mapping.OwnLock.unlock();
    } else {
        ReleaseMutex(mapping.SharedLock);
    }
}

bool OthersMayJoin() {
    return !MachineName().empty();
}

Process CurrentProcess() {
    static const Process self{GetCurrentProcessId(), StartTimeOf(GetCurrentProcess())};
    return self;
}

void Die() {
    TerminateProcess(GetCurrentProcess(), 3);
    for (;;) {
        Sleep(INFINITE);
    }
}

bool IsAlive(const Process& process) {
    if (process == CurrentProcess()) {
        return true;
    }
    const HANDLE handle = OpenProcess(SYNCHRONIZE | PROCESS_QUERY_INFORMATION, FALSE, process.Id);
    if (!handle) {
        return false;
    }
    const bool alive =
        WaitForSingleObject(handle, 0) == WAIT_TIMEOUT && StartTimeOf(handle) == process.StartTime;
    CloseHandle(handle);
    return alive;
}

int64_t Nanoseconds() {
    static const int64_t frequency = [] {
        LARGE_INTEGER ticks{};
        QueryPerformanceFrequency(&ticks);
        return ticks.QuadPart;
    }();
    LARGE_INTEGER now{};
    QueryPerformanceCounter(&now);
    constexpr int64_t Second = 1000000000;
    return now.QuadPart / frequency * Second + now.QuadPart % frequency * Second / frequency;
}

void Nap(int64_t nanoseconds) {
    LARGE_INTEGER length{};
    length.QuadPart = -(nanoseconds / 100);
    NtDelayExecution(FALSE, &length);
}

}  // namespace host
}  // namespace simulator
