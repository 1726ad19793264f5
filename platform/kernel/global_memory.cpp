// Global memory: fixed blocks, whose handle is their address.
#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <unordered_map>

#include "platform/kernel/call_failure.h"
#include "platform/kernel/memory.h"

namespace platform {

namespace {

struct GlobalBlocks {
    std::mutex Lock;  // guards Sizes
    std::unordered_map<HGLOBAL, SIZE_T> Sizes;

    bool Has(HGLOBAL block) {
        if (Sizes.contains(block)) {
            return true;
        }
        SetLastError(ERROR_INVALID_HANDLE);
        return false;
    }
};

GlobalBlocks& Blocks() {
    static GlobalBlocks& blocks = *new GlobalBlocks;
    return blocks;
}

HGLOBAL Fail(DWORD error) {
    SetLastError(error);
    return nullptr;
}

}  // namespace

int GlobalBlockCount() {
    const std::lock_guard guard(Blocks().Lock);
    return static_cast<int>(Blocks().Sizes.size());
}

}  // namespace platform

using namespace platform;

HGLOBAL WINAPI GlobalAlloc(UINT, SIZE_T dwBytes) {
    void* const block = CallFails("GlobalAlloc") ? nullptr : std::malloc(std::max<SIZE_T>(dwBytes, 1));
    if (block == nullptr) {
        return Fail(ERROR_NOT_ENOUGH_MEMORY);
    }
    const std::lock_guard guard(Blocks().Lock);
    Blocks().Sizes[block] = dwBytes;
    return block;
}

// A block may not move, so it does not grow.
HGLOBAL WINAPI GlobalReAlloc(HGLOBAL hMem, SIZE_T dwBytes, UINT) {
    const std::lock_guard guard(Blocks().Lock);
    if (CallFails("GlobalReAlloc") || !Blocks().Has(hMem) || dwBytes > Blocks().Sizes[hMem]) {
        return Fail(ERROR_NOT_ENOUGH_MEMORY);
    }
    return hMem;
}

HGLOBAL WINAPI GlobalFree(HGLOBAL hMem) {
    const std::lock_guard guard(Blocks().Lock);
    if (!Blocks().Has(hMem)) {
        return hMem;
    }
    Blocks().Sizes.erase(hMem);
    std::free(hMem);
    return nullptr;
}

LPVOID WINAPI GlobalLock(HGLOBAL hMem) {
    const std::lock_guard guard(Blocks().Lock);
    if (CallFails("GlobalLock")) {
        return Fail(ERROR_DISCARDED);
    }
    return Blocks().Has(hMem) ? hMem : nullptr;
}

// TRUE while the block stays locked; a fixed block always does.
BOOL WINAPI GlobalUnlock(HGLOBAL hMem) {
    const std::lock_guard guard(Blocks().Lock);
    return Blocks().Has(hMem) ? TRUE : FALSE;
}
