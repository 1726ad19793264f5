// Global memory: fixed blocks, whose handle is their address, and moveable ones, which have an address
// only while they are locked.
#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "platform/kernel/call_failure.h"
#include "platform/kernel/memory.h"

namespace platform {

namespace {

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};
using Memory = std::unique_ptr<void, FreeMemory>;

struct GlobalBlock {
    Memory Data;
    SIZE_T Size;
    SIZE_T Capacity;  // a fixed block that was made smaller keeps its memory
    bool Moveable;
    unsigned LockCount;
};

struct GlobalBlocks {
    std::mutex Lock;
    std::unordered_map<HGLOBAL, GlobalBlock> ByHandle;
    ULONG_PTR LastMoveable = 0;
};

GlobalBlocks& Blocks() {
    static GlobalBlocks& blocks = *new GlobalBlocks;
    return blocks;
}

Memory Allocate(SIZE_T bytes, bool zeroed) {
    const SIZE_T size = std::max<SIZE_T>(bytes, 1);
    return Memory(zeroed ? std::calloc(1, size) : std::malloc(size));
}

// A value that is no address, and like a moveable handle of the system not a multiple of 4.
HGLOBAL NewMoveableHandle(GlobalBlocks& blocks) {
    blocks.LastMoveable += 4;
    return reinterpret_cast<HGLOBAL>(blocks.LastMoveable | 2);
}

// With the lock held: null and ERROR_INVALID_HANDLE when there is no such block.
GlobalBlock* FindBlock(GlobalBlocks& blocks, HGLOBAL handle) {
    const auto found = blocks.ByHandle.find(handle);
    if (found == blocks.ByHandle.end()) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    return &found->second;
}

// A block stays where it is when somebody may know its address.
bool MayMove(const GlobalBlock& block, UINT flags) {
    return (flags & GMEM_MOVEABLE) != 0 || (block.Moveable && block.LockCount == 0);
}

bool ResizeInPlace(GlobalBlock& block, SIZE_T bytes, bool zeroed) {
    if (bytes > block.Capacity) {
        return false;
    }
    if (zeroed && bytes > block.Size) {
        std::memset(static_cast<char*>(block.Data.get()) + block.Size, 0, bytes - block.Size);
    }
    block.Size = bytes;
    return true;
}

bool ResizeElsewhere(GlobalBlock& block, SIZE_T bytes, bool zeroed) {
    Memory memory = Allocate(bytes, zeroed);
    if (!memory) {
        return false;
    }
    std::memcpy(memory.get(), block.Data.get(), std::min(bytes, block.Size));
    block.Data = std::move(memory);
    block.Size = block.Capacity = bytes;
    return true;
}

}  // namespace

int GlobalBlockCount() {
    GlobalBlocks& blocks = Blocks();
    const std::lock_guard guard(blocks.Lock);
    return static_cast<int>(blocks.ByHandle.size());
}

}  // namespace platform

using namespace platform;

HGLOBAL WINAPI GlobalAlloc(UINT uFlags, SIZE_T dwBytes) {
    Memory memory = CallFails("GlobalAlloc") ? nullptr : Allocate(dwBytes, (uFlags & GMEM_ZEROINIT) != 0);
    if (!memory) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    GlobalBlocks& blocks = Blocks();
    const std::lock_guard guard(blocks.Lock);
    const bool moveable = (uFlags & GMEM_MOVEABLE) != 0;
    const HGLOBAL handle = moveable ? NewMoveableHandle(blocks) : memory.get();
    blocks.ByHandle.emplace(handle, GlobalBlock{std::move(memory), dwBytes, dwBytes, moveable, 0});
    return handle;
}

HGLOBAL WINAPI GlobalReAlloc(HGLOBAL hMem, SIZE_T dwBytes, UINT uFlags) {
    GlobalBlocks& blocks = Blocks();
    const std::lock_guard guard(blocks.Lock);
    if (CallFails("GlobalReAlloc")) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    GlobalBlock* block = FindBlock(blocks, hMem);
    if (block == nullptr) {
        return nullptr;
    }
    if ((uFlags & GMEM_MODIFY) != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const bool zeroed = (uFlags & GMEM_ZEROINIT) != 0;
    const bool resized = ResizeInPlace(*block, dwBytes, zeroed) ||
                         (MayMove(*block, uFlags) && ResizeElsewhere(*block, dwBytes, zeroed));
    if (!resized) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    if (block->Moveable || block->Data.get() == hMem) {
        return hMem;
    }
    // A fixed block that moved has its new address for a handle.
    const HGLOBAL moved = block->Data.get();
    auto node = blocks.ByHandle.extract(hMem);
    node.key() = moved;
    blocks.ByHandle.insert(std::move(node));
    return moved;
}

HGLOBAL WINAPI GlobalFree(HGLOBAL hMem) {
    if (hMem == nullptr) {
        return nullptr;
    }
    GlobalBlocks& blocks = Blocks();
    const std::lock_guard guard(blocks.Lock);
    if (FindBlock(blocks, hMem) == nullptr) {
        return hMem;
    }
    blocks.ByHandle.erase(hMem);
    return nullptr;
}

LPVOID WINAPI GlobalLock(HGLOBAL hMem) {
    GlobalBlocks& blocks = Blocks();
    const std::lock_guard guard(blocks.Lock);
    if (CallFails("GlobalLock")) {
        SetLastError(ERROR_DISCARDED);
        return nullptr;
    }
    GlobalBlock* block = FindBlock(blocks, hMem);
    if (block == nullptr) {
        return nullptr;
    }
    if (block->Moveable) {
        ++block->LockCount;
    }
    return block->Data.get();
}

// TRUE while the block stays locked; a fixed block always does.
BOOL WINAPI GlobalUnlock(HGLOBAL hMem) {
    GlobalBlocks& blocks = Blocks();
    const std::lock_guard guard(blocks.Lock);
    GlobalBlock* block = FindBlock(blocks, hMem);
    if (block == nullptr) {
        return FALSE;
    }
    if (!block->Moveable) {
        return TRUE;
    }
    if (block->LockCount == 0) {
        SetLastError(ERROR_NOT_LOCKED);
        return FALSE;
    }
    SetLastError(NO_ERROR);
    return --block->LockCount != 0;
}
