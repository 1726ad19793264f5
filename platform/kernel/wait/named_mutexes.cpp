#include "platform/kernel/wait/named_mutexes.h"

#include <algorithm>
#include <mutex>

#include "platform/machine.h"

namespace platform {

namespace {

constexpr size_t MaximumMutexes = 64;
constexpr size_t MaximumProcesses = 64;

struct ProcessUse {
    ProcessIdentity Process;
    uint32_t Count;  // open uses; 0: this entry is free
};

struct NamedMutex {
    MutexCore Core;
    uint32_t NameLength;  // 0: this entry is free
    char16_t Name[MAX_PATH];
    ProcessUse Uses[MaximumProcesses];

    bool HasName(std::u16string_view name) const { return std::u16string_view(Name, NameLength) == name; }
};

struct NamedMutexTable {
    SharedMutex Lock;  // guards everything but the mutexes' locks
    NamedMutex Mutexes[MaximumMutexes];

    void Initialize() { Lock.Initialize(); }
};

constinit const MachineRegion<NamedMutexTable> TableRegion("named-mutexes");

bool IsSame(const ProcessIdentity& one, const ProcessIdentity& other) {
    return one.Id == other.Id && one.StartTime == other.StartTime;
}

void ForgetDeadProcesses(NamedMutex& mutex) {
    bool used = false;
    for (ProcessUse& use : mutex.Uses) {
        if (use.Count != 0 && !IsAlive(use.Process)) {
            use.Count = 0;
        }
        used |= use.Count != 0;
    }
    if (!used) {
        mutex.NameLength = 0;
    }
}

NamedMutex* FindByName(std::u16string_view name) {
    for (NamedMutex& mutex : TableRegion->Mutexes) {
        if (mutex.NameLength != 0 && mutex.HasName(name)) {
            ForgetDeadProcesses(mutex);
            return mutex.NameLength != 0 ? &mutex : nullptr;
        }
    }
    return nullptr;
}

NamedMutex* FindFree() {
    for (NamedMutex& mutex : TableRegion->Mutexes) {
        if (mutex.NameLength != 0) {
            ForgetDeadProcesses(mutex);
        }
        if (mutex.NameLength == 0) {
            return &mutex;
        }
    }
    return nullptr;
}

bool CountUse(NamedMutex& mutex) {
    const ProcessIdentity self = CurrentProcess();
    ProcessUse* const end = std::end(mutex.Uses);
    ProcessUse* use = std::find_if(mutex.Uses, end, [&](const ProcessUse& candidate) {
        return candidate.Count != 0 && IsSame(candidate.Process, self);
    });
    if (use == end) {
        use = std::find_if(mutex.Uses, end, [](const ProcessUse& candidate) { return candidate.Count == 0; });
    }
    if (use == end) {
        return false;
    }
    use->Process = self;
    ++use->Count;
    return true;
}

}  // namespace

void MutexCore::Initialize(bool shared) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setpshared(&attributes, shared ? PTHREAD_PROCESS_SHARED : PTHREAD_PROCESS_PRIVATE);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    pthread_mutex_init(&Lock, &attributes);
    pthread_mutexattr_destroy(&attributes);
    Abandoned = false;
}

DWORD OpenNamedMutex(std::u16string_view name, NamedMutexUse* use) {
    if (name.empty() || name.size() >= MAX_PATH) {
        return ERROR_INVALID_NAME;
    }
    const std::lock_guard guard(TableRegion->Lock);
    NamedMutex* mutex = FindByName(name);
    const bool existed = mutex != nullptr;
    if (!existed) {
        mutex = FindFree();
        if (mutex == nullptr) {
            return ERROR_NO_SYSTEM_RESOURCES;
        }
        mutex->Core.Initialize(true);
        std::copy(name.begin(), name.end(), mutex->Name);
    }
    if (!CountUse(*mutex)) {
        return ERROR_NO_SYSTEM_RESOURCES;
    }
    mutex->NameLength = static_cast<uint32_t>(name.size());
    use->Core = &mutex->Core;
    return existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS;
}

void CloseNamedMutex(NamedMutexUse use) {
    const std::lock_guard guard(TableRegion->Lock);
    for (NamedMutex& mutex : TableRegion->Mutexes) {
        if (&mutex.Core != use.Core) {
            continue;
        }
        const ProcessIdentity self = CurrentProcess();
        for (ProcessUse& counted : mutex.Uses) {
            // A handle that a fork's child inherited was never counted for the child.
            if (counted.Count != 0 && IsSame(counted.Process, self)) {
                --counted.Count;
                break;
            }
        }
        ForgetDeadProcesses(mutex);
    }
}

}  // namespace platform
