// The process heap.
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>

#include "platform/kernel/call_failure.h"
#include "platform/kernel/memory.h"

static std::atomic<int> heapBlocks{0};

int platform::HeapBlockCount() {
    return heapBlocks.load();
}

HANDLE WINAPI GetProcessHeap() {
    return &heapBlocks;
}

LPVOID WINAPI HeapAlloc(HANDLE hHeap, DWORD dwFlags, SIZE_T dwBytes) {
    if (hHeap != GetProcessHeap() || platform::CallFails("HeapAlloc")) {
        return nullptr;
    }
    const SIZE_T size = std::max<SIZE_T>(dwBytes, 1);
    void* memory = (dwFlags & HEAP_ZERO_MEMORY) != 0 ? std::calloc(1, size) : std::malloc(size);
    if (memory != nullptr) {
        heapBlocks.fetch_add(1);
    }
    return memory;
}

BOOL WINAPI HeapFree(HANDLE hHeap, DWORD, LPVOID lpMem) {
    if (hHeap != GetProcessHeap()) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    if (lpMem != nullptr) {
        std::free(lpMem);
        heapBlocks.fetch_sub(1);
    }
    return TRUE;
}
