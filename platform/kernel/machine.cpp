#include "platform/machine.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <utility>

namespace platform {

namespace {

constexpr size_t MaximumRegions = 32;
constexpr size_t MaximumNameLength = 64;

struct MappedRegion {
    char Name[MaximumNameLength];
    void* Memory;
    size_t Size;
};

struct Machine {
    std::mutex Lock;  // guards everything; the first Count regions may be read without it
    bool Chosen = false;
    std::string Name;
    std::array<MappedRegion, MaximumRegions> Regions{};
    std::atomic<size_t> Count{0};
};

Machine& TheMachine() {
    static Machine& machine = *new Machine;
    return machine;
}

[[noreturn]] void EndProcess(const char* what, const char* name) {
    std::fprintf(stderr, "machine: %s %s: %s\n", what, name, std::strerror(errno));
    std::abort();
}

class FileDescriptor {
public:
    explicit FileDescriptor(int number) : number_(number) {}
    ~FileDescriptor() {
        if (number_ >= 0) {
            close(number_);
        }
    }
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int Number() const { return number_; }

private:
    int number_;
};

bool IsGoodName(const std::string& name) {
    return name.size() <= MaximumNameLength && std::all_of(name.begin(), name.end(), [](char c) {
               return std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_';
           });
}

std::string UserDirectory() {
    return "/dev/shm/kestvox-" + std::to_string(getuid());
}
std::string MachineDirectory(const std::string& name) {
    return UserDirectory() + "/" + name;
}
std::string LockPath(const std::string& name) {
    return MachineDirectory(name) + "/.lock";
}

// Another user must not be able to slip in files of theirs.
bool MakeOwnDirectory(const std::string& path) {
    struct stat status {};
    mkdir(path.c_str(), 0700);
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == getuid();
}

// However many signals come meanwhile.
bool TakeLock(const FileDescriptor& lock) {
    int result = 0;
    do {
        result = flock(lock.Number(), LOCK_EX);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

bool MakeRoom(const FileDescriptor& file, size_t size) {
    do {
        errno = posix_fallocate(file.Number(), 0, static_cast<off_t>(size));
    } while (errno == EINTR);
    return errno == 0;
}

// The lock of a machine's regions, held as long as the answer is open; negative when it cannot be
// had. The lock file may have been removed while this waited for it: then there is a new machine.
FileDescriptor LockMachine(const std::string& name) {
    while (MakeOwnDirectory(UserDirectory()) && MakeOwnDirectory(MachineDirectory(name))) {
        FileDescriptor lock(open(LockPath(name).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
        if (lock.Number() < 0 && errno == ENOENT) {
            continue;
        }
        struct stat status {};
        if (lock.Number() < 0 || !TakeLock(lock) || fstat(lock.Number(), &status) != 0) {
            break;
        }
        if (status.st_nlink != 0) {
            return lock;
        }
    }
    return FileDescriptor(-1);
}

void* MapFile(const FileDescriptor& file, size_t size) {
    void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file.Number(), 0);
    return memory == MAP_FAILED ? nullptr : memory;
}

void* MapPrivateRegion(const char* region, size_t size, void (*create)(void*)) {
    // Shared all the same, so that a fork's child is on its parent's machine.
    void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        EndProcess("cannot map", region);
    }
    create(memory);
    return memory;
}

void* CreateRegionFile(const std::string& path, size_t size, void (*create)(void*)) {
    const std::string unfinished = path + ".new";
    const FileDescriptor file(open(unfinished.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    if (file.Number() < 0) {
        EndProcess("cannot make", path.c_str());
    }
    void* memory = MakeRoom(file, size) ? MapFile(file, size) : nullptr;
    if (memory == nullptr) {
        EndProcess("cannot make", path.c_str());
    }
    create(memory);
    if (rename(unfinished.c_str(), path.c_str()) != 0) {
        EndProcess("cannot make", path.c_str());
    }
    return memory;
}

void* OpenRegionFile(const FileDescriptor& file, const std::string& path, size_t size) {
    struct stat status {};
    if (fstat(file.Number(), &status) != 0) {
        EndProcess("cannot open", path.c_str());
    }
    if (static_cast<size_t>(status.st_size) != size) {
        errno = EINVAL;
        EndProcess("was made by another version of this program:", path.c_str());
    }
    void* memory = MapFile(file, size);
    if (memory == nullptr) {
        EndProcess("cannot open", path.c_str());
    }
    return memory;
}

void* MapNamedRegion(const std::string& machine, const char* region, size_t size, void (*create)(void*)) {
    const FileDescriptor lock = LockMachine(machine);
    if (lock.Number() < 0) {
        EndProcess("cannot lock", machine.c_str());
    }
    const std::string path = MachineDirectory(machine) + "/" + region;
    const FileDescriptor file(open(path.c_str(), O_RDWR | O_CLOEXEC));
    return file.Number() < 0 ? CreateRegionFile(path, size, create) : OpenRegionFile(file, path, size);
}

void* FindRegion(const Machine& machine, const char* name, size_t size) {
    const size_t count = machine.Count.load(std::memory_order_acquire);
    for (size_t i = 0; i < count; ++i) {
        if (std::strcmp(machine.Regions[i].Name, name) == 0) {
            if (machine.Regions[i].Size != size) {
                errno = EINVAL;
                EndProcess("asked for in two sizes:", name);
            }
            return machine.Regions[i].Memory;
        }
    }
    return nullptr;
}

void UnmapRegions(Machine& machine) {
    const size_t count = machine.Count.exchange(0);
    for (size_t i = 0; i < count; ++i) {
        munmap(machine.Regions[i].Memory, machine.Regions[i].Size);
    }
}

bool ChooseMachine(Machine& machine, const std::string& name) {
    if (!IsGoodName(name) || (!name.empty() && LockMachine(name).Number() < 0)) {
        return false;
    }
    UnmapRegions(machine);
    machine.Name = name;
    machine.Chosen = true;
    return true;
}

// A process that has not chosen a machine is on the one that its environment names.
void EnsureChosen(Machine& machine) {
    if (machine.Chosen) {
        return;
    }
    const char* name = std::getenv("KESTVOX_MACHINE");
    if (!ChooseMachine(machine, name == nullptr ? "" : name)) {
        errno = EINVAL;
        EndProcess("cannot use KESTVOX_MACHINE", name);
    }
}

}  // namespace

bool UseMachine(const std::string& name) {
    Machine& machine = TheMachine();
    const std::lock_guard guard(machine.Lock);
    return ChooseMachine(machine, name);
}

const std::string& MachineName() {
    Machine& machine = TheMachine();
    const std::lock_guard guard(machine.Lock);
    EnsureChosen(machine);
    return machine.Name;
}

bool RemoveMachine(const std::string& name) {
    std::error_code error;
    if (name.empty() || !IsGoodName(name) || !std::filesystem::is_directory(MachineDirectory(name), error)) {
        return false;
    }
    const FileDescriptor lock = LockMachine(name);
    if (lock.Number() < 0) {
        return false;
    }
    std::filesystem::remove_all(MachineDirectory(name), error);
    return !error;
}

void* MapMachineRegion(const char* name, size_t size, void (*create)(void*)) {
    Machine& machine = TheMachine();
    if (void* memory = FindRegion(machine, name, size)) {
        return memory;
    }
    const std::lock_guard guard(machine.Lock);
    EnsureChosen(machine);
    if (void* memory = FindRegion(machine, name, size)) {
        return memory;
    }
    const size_t count = machine.Count.load(std::memory_order_relaxed);
    if (count == MaximumRegions || std::strlen(name) >= MaximumNameLength) {
        errno = ENOSPC;
        EndProcess("no room for", name);
    }
    MappedRegion& region = machine.Regions[count];
    std::strcpy(region.Name, name);
    region.Size = size;
    region.Memory = machine.Name.empty() ? MapPrivateRegion(name, size, create)
                                         : MapNamedRegion(machine.Name, name, size, create);
    machine.Count.store(count + 1, std::memory_order_release);
    return region.Memory;
}

void SharedMutex::Initialize() {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    pthread_mutex_init(&mutex_, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

void SharedMutex::lock() {
    if (pthread_mutex_lock(&mutex_) == EOWNERDEAD) {
        pthread_mutex_consistent(&mutex_);
    }
}

void SharedMutex::unlock() {
    pthread_mutex_unlock(&mutex_);
}

}  // namespace platform
