// The handle table of the process: every HANDLE that a Windows call gives out, registry keys and
// event sources included, is an entry of it.
#pragma once

#include <windows.h>

#include <initializer_list>
#include <memory>

namespace platform {

enum class HandleKind { Event, Mutex, Thread, DeviceFile, RegistryKey, EventSource };

// What a handle stands for. Destroyed when its last handle is closed and no call is using it any
// more; no lock of the handle table is held then.
class KernelObject {
public:
    explicit KernelObject(HandleKind kind) : kind_(kind) {}
    virtual ~KernelObject() = default;
    KernelObject(const KernelObject&) = delete;
    KernelObject& operator=(const KernelObject&) = delete;

    HandleKind Kind() const { return kind_; }

private:
    const HandleKind kind_;
};

// A new handle for the object; null when the table is full (then the object is the caller's alone).
// Handles are multiples of 4, never INVALID_HANDLE_VALUE nor one of the predefined keys, and not
// given out a second time.
HANDLE OpenHandle(std::shared_ptr<KernelObject> object);

// The object of an open handle, kept alive by the answer; null when the handle is closed or was
// never one.
std::shared_ptr<KernelObject> FindObject(HANDLE handle);

// The same for a handle that must be of one kind: T::ObjectKind names it. Null when it is of another.
template <typename T>
std::shared_ptr<T> FindObject(HANDLE handle) {
    std::shared_ptr<KernelObject> object = FindObject(handle);
    if (!object || object->Kind() != T::ObjectKind) {
        return nullptr;
    }
    return std::static_pointer_cast<T>(std::move(object));
}

// False when the handle is not open, or of none of the kinds. CloseHandle closes every kind but keys
// and event sources, which have calls of their own.
bool CloseHandleOfKinds(HANDLE handle, std::initializer_list<HandleKind> kinds);

int OpenHandleCount();

}  // namespace platform
