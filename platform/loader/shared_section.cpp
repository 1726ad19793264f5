#include "platform/loader/shared_section.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <mutex>

#include "platform/machine.h"

namespace platform {

// The first page of the region; the section's own pages follow.
struct SharedSection::Holders {
    SharedMutex Lock;
    ProcessIdentity Processes[64];

    bool Add(void* contents, const void* image, size_t size);
    void Remove();
};

namespace {

bool Same(const ProcessIdentity& left, const ProcessIdentity& right) {
    return left.Id == right.Id && left.StartTime == right.StartTime;
}

// One region for each file, as the system shares sections between loads of one image only. The name
// is for the reader of a machine's directory.
std::string RegionName(const std::string& modulePath) {
    const std::string file = modulePath.substr(modulePath.rfind('/') + 1, 24);
    return "section-" + file + "-" + std::to_string(std::hash<std::string>()(modulePath));
}

}  // namespace

// Enters this process into the list of holders. When no other holder lives, the contents are copied from
// the module's file.
bool SharedSection::Holders::Add(void* contents, const void* image, size_t size) {
    const std::lock_guard hold(Lock);
    const ProcessIdentity self = CurrentProcess();
    ProcessIdentity* freePlace = nullptr;
    bool inUse = false;
    for (ProcessIdentity& process : Processes) {
        if (process.Id != 0 && (Same(process, self) || !IsAlive(process))) {
            process = {};
        }
        if (process.Id != 0) {
            inUse = true;
        } else if (!freePlace) {
            freePlace = &process;
        }
    }
    if (!freePlace) {
        return false;
    }
    if (!inUse) {
        std::memcpy(contents, image, size);
    }
    *freePlace = self;
    return true;
}

void SharedSection::Holders::Remove() {
    const std::lock_guard hold(Lock);
    const ProcessIdentity self = CurrentProcess();
    for (ProcessIdentity& process : Processes) {
        if (Same(process, self)) {
            process = {};
        }
    }
}

std::unique_ptr<SharedSection> SharedSection::Map(const std::string& modulePath, void* image, size_t size) {
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    static_assert(sizeof(Holders) <= 4096);
    if (reinterpret_cast<uintptr_t>(image) % page != 0 || size % page != 0) {
        return nullptr;
    }

    auto* region =
        static_cast<BYTE*>(MapMachineRegion(RegionName(modulePath).c_str(), page + size, [](void* memory) {
            static_cast<Holders*>(memory)->Lock.Initialize();
        }));
    auto* holders = reinterpret_cast<Holders*>(region);
    if (!holders->Add(region + page, image, size)) {
        return nullptr;
    }
    std::unique_ptr<SharedSection> section(new SharedSection(holders));

    // A size of 0 duplicates the shared mapping instead of moving it.
    if (mremap(region + page, 0, size, MREMAP_MAYMOVE | MREMAP_FIXED, image) == MAP_FAILED) {
        return nullptr;
    }
    return section;
}

SharedSection::~SharedSection() {
    holders_->Remove();
}

}  // namespace platform
