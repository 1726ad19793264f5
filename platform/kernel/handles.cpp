#include "platform/kernel/handles.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <vector>

namespace platform {

namespace {

constexpr size_t SlotsPerChunk = 256;
constexpr size_t MaximumChunks = 256;
constexpr unsigned IndexBits = 17;  // one more than the slots need: index 0 is never given out

struct Slot {
    std::mutex Lock;          // guards the rest
    uint32_t Generation = 0;  // counts the handles that this slot has been
    std::shared_ptr<KernelObject> Object;
};

using Chunk = std::array<Slot, SlotsPerChunk>;

struct HandleTable {
    std::array<std::atomic<Chunk*>, MaximumChunks> Chunks{};
    std::mutex AllocationLock;  // guards FreeSlots and SlotCount
    std::vector<size_t> FreeSlots;
    size_t SlotCount = 0;
    std::atomic<int> OpenHandles{0};
};

// Never destroyed: threads may still use handles while the process ends.
HandleTable& Table() {
    static HandleTable& table = *new HandleTable;
    return table;
}

HANDLE ComposeHandle(size_t index, uint32_t generation) {
    return reinterpret_cast<HANDLE>((static_cast<uint64_t>(generation) << IndexBits | (index + 1)) << 2);
}

// The slot that a handle names, with its generation; null when no handle can have that value.
Slot* SlotOf(HANDLE handle, uint32_t* generation, size_t* index) {
    const uint64_t value = reinterpret_cast<uint64_t>(handle);
    const uint64_t number = value >> 2 & ((1u << IndexBits) - 1);
    if ((value & 3) != 0 || value >> (2 + IndexBits) > UINT32_MAX || number == 0 ||
        number > MaximumChunks * SlotsPerChunk) {
        return nullptr;
    }
    *generation = static_cast<uint32_t>(value >> (2 + IndexBits));
    *index = number - 1;
    Chunk* chunk = Table().Chunks[*index / SlotsPerChunk].load(std::memory_order_acquire);
    return chunk == nullptr ? nullptr : &(*chunk)[*index % SlotsPerChunk];
}

bool AllocateSlot(size_t* index) {
    HandleTable& table = Table();
    const std::lock_guard guard(table.AllocationLock);
    if (!table.FreeSlots.empty()) {
        *index = table.FreeSlots.back();
        table.FreeSlots.pop_back();
        return true;
    }
    if (table.SlotCount == MaximumChunks * SlotsPerChunk) {
        return false;
    }
    if (table.SlotCount % SlotsPerChunk == 0) {
        table.Chunks[table.SlotCount / SlotsPerChunk].store(new Chunk, std::memory_order_release);
    }
    *index = table.SlotCount++;
    return true;
}

}  // namespace

HANDLE OpenHandle(std::shared_ptr<KernelObject> object) {
    size_t index = 0;
    if (!AllocateSlot(&index)) {
        return nullptr;
    }
    HandleTable& table = Table();
    Slot& slot =
        (*table.Chunks[index / SlotsPerChunk].load(std::memory_order_acquire))[index % SlotsPerChunk];
    table.OpenHandles.fetch_add(1, std::memory_order_relaxed);
    const std::lock_guard guard(slot.Lock);
    slot.Object = std::move(object);
    return ComposeHandle(index, slot.Generation);
}

std::shared_ptr<KernelObject> FindObject(HANDLE handle) {
    uint32_t generation = 0;
    size_t index = 0;
    Slot* slot = SlotOf(handle, &generation, &index);
    if (slot == nullptr) {
        return nullptr;
    }
    const std::lock_guard guard(slot->Lock);
    return slot->Generation == generation ? slot->Object : nullptr;
}

bool CloseHandleOfKinds(HANDLE handle, std::initializer_list<HandleKind> kinds) {
    uint32_t generation = 0;
    size_t index = 0;
    Slot* slot = SlotOf(handle, &generation, &index);
    if (slot == nullptr) {
        return false;
    }
    // Let go after every lock, since its end may call a device driver.
    std::shared_ptr<KernelObject> object;
    {
        const std::lock_guard guard(slot->Lock);
        if (slot->Generation != generation || !slot->Object ||
            std::find(kinds.begin(), kinds.end(), slot->Object->Kind()) == kinds.end()) {
            return false;
        }
        object = std::move(slot->Object);
        slot->Object = nullptr;
        ++slot->Generation;
    }
    HandleTable& table = Table();
    table.OpenHandles.fetch_sub(1, std::memory_order_relaxed);
    const std::lock_guard guard(table.AllocationLock);
    table.FreeSlots.push_back(index);
    return true;
}

int OpenHandleCount() {
    return Table().OpenHandles.load(std::memory_order_relaxed);
}

}  // namespace platform

BOOL WINAPI CloseHandle(HANDLE hObject) {
    using platform::HandleKind;
    if (!platform::CloseHandleOfKinds(
            hObject, {HandleKind::Event, HandleKind::Mutex, HandleKind::Thread, HandleKind::DeviceFile})) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    return TRUE;
}
