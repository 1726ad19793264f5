// Objects on the process heap, without exceptions: null when there is no memory.
#pragma once

#include <windows.h>

#include <new>

namespace kestvox {

// A value-initialised T, so plain members are zero.
template <typename T>
T* NewHeapObject() {
    void* memory = HeapAlloc(GetProcessHeap(), 0, sizeof(T));
    return memory != nullptr ? new (memory) T() : nullptr;
}

template <typename T>
void FreeHeapObject(T* object) {
    if (object != nullptr) {
        object->~T();
        HeapFree(GetProcessHeap(), 0, object);
    }
}

// Uninitialised memory for `count` plain elements.
template <typename T>
T* NewHeapArray(DWORD count) {
    return static_cast<T*>(HeapAlloc(GetProcessHeap(), 0, count * sizeof(T)));
}

template <typename T>
void FreeHeapArray(T* array) {
    if (array != nullptr) {
        HeapFree(GetProcessHeap(), 0, array);
    }
}

}  // namespace kestvox
