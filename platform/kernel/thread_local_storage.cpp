// Slots of thread-local storage.
#include <windows.h>

#include <array>
#include <atomic>
#include <mutex>

#include "platform/kernel/call_failure.h"

namespace platform {

namespace {

// Even: the slot is free. Each allocation makes it odd, each release even again, so that what a
// thread stored under an earlier allocation is not seen under a later one.
std::array<std::atomic<uint32_t>, TLS_MINIMUM_AVAILABLE> generations{};
std::mutex allocationLock;

struct StoredValue {
    uint32_t Generation;
    void* Value;
};
thread_local std::array<StoredValue, TLS_MINIMUM_AVAILABLE> values{};

// 0 when the slot is not allocated.
uint32_t AllocatedGeneration(DWORD index) {
    const uint32_t generation = index < generations.size() ? generations[index].load() : 0;
    return generation % 2 != 0 ? generation : 0;
}

}  // namespace

}  // namespace platform

using namespace platform;

DWORD WINAPI TlsAlloc() {
    const std::lock_guard guard(allocationLock);
    if (CallFails("TlsAlloc")) {
        SetLastError(ERROR_NO_MORE_ITEMS);
        return TLS_OUT_OF_INDEXES;
    }
    for (DWORD index = 0; index < generations.size(); ++index) {
        if (generations[index] % 2 == 0) {
            ++generations[index];
            return index;
        }
    }
    SetLastError(ERROR_NO_MORE_ITEMS);
    return TLS_OUT_OF_INDEXES;
}

BOOL WINAPI TlsFree(DWORD dwTlsIndex) {
    const std::lock_guard guard(allocationLock);
    if (AllocatedGeneration(dwTlsIndex) == 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    ++generations[dwTlsIndex];
    return TRUE;
}

LPVOID WINAPI TlsGetValue(DWORD dwTlsIndex) {
    const uint32_t generation = AllocatedGeneration(dwTlsIndex);
    SetLastError(generation != 0 ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER);
    if (generation == 0 || values[dwTlsIndex].Generation != generation) {
        return nullptr;
    }
    return values[dwTlsIndex].Value;
}

BOOL WINAPI TlsSetValue(DWORD dwTlsIndex, LPVOID lpTlsValue) {
    const uint32_t generation = AllocatedGeneration(dwTlsIndex);
    if (generation == 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    values[dwTlsIndex] = {generation, lpTlsValue};
    return TRUE;
}
