// What a device's driver supplies to the platform layer, and what the layer's I/O side offers it.
//
// The platform has no devices of its own. A component that models one (the simulated card) installs
// a DeviceDriver; CreateFileW, DeviceIoControl and CloseHandle then lead to it.
#pragma once

#include <windows.h>

#include <memory>

namespace platform {

// One device-control request. The buffers belong to the caller of DeviceIoControl and are valid only
// during Control(), except the memory that a direct-I/O request asks the driver to map.
struct DeviceRequest {
    DWORD Code;
    const void* Input;
    DWORD InputLength;
    void* Output;
    DWORD OutputLength;
    DWORD BytesReturned;  // set by the driver; 0 on entry
};

// Called on any thread, several at once: an implementation does its own locking. Results are
// system error codes.
class DeviceDriver {
public:
    // ERROR_FILE_NOT_FOUND when `path` names no device of this driver. On success `*file` is the
    // driver's own object for the new file handle.
    virtual DWORD Open(const WCHAR* path, void** file) = 0;

    // The handle of `file` was closed and every Control() of it has returned. Called exactly once for
    // each successful Open, on the thread that ended last; no lock of the platform is held.
    virtual void Close(void* file) = 0;

    // ERROR_SUCCESS, ERROR_IO_PENDING (DeviceIoControl then fails with that code; the operation never
    // completes, and its caller sees 0 bytes returned), or a failure. No lock of the platform is held.
    virtual DWORD Control(void* file, DeviceRequest& request) = 0;

protected:
    ~DeviceDriver() = default;
};

// One driver at a time; null removes it. The driver must outlive every open handle. Answers the one before,
// so that a driver can be put in front of another.
DeviceDriver* InstallDeviceDriver(DeviceDriver* driver);

// A thread as the kernel refers to it: stays valid after the thread and its handles are gone.
class ThreadObject;
using ThreadReference = std::shared_ptr<ThreadObject>;
ThreadReference CurrentThreadReference();

// Queues a user-mode procedure call with three arguments, as a kernel driver does. It runs on the
// thread when that thread next waits alertably. False when the thread has ended.
using ProcedureCall = void(CALLBACK*)(ULONG_PTR, ULONG_PTR, ULONG_PTR);
bool QueueProcedureCall(const ThreadReference& thread, ProcedureCall routine, ULONG_PTR first,
                        ULONG_PTR second, ULONG_PTR third);

// Waits until no thread of the process has a procedure call queued and every thread that ran one is
// back in an alertable wait (or has ended), so that everything a completion sets off has happened.
// False when that has not come about after `realMilliseconds` of real time.
bool WaitUntilQuiet(DWORD realMilliseconds);

}  // namespace platform
