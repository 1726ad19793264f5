// What a device's driver and the system in front of it agree on: the calls, and the request that they carry.
//
// Whoever plays the system (the platform layer, or the simulator under a library attached on Windows) and
// whoever plays the driver (the simulated cards) include this header and nothing of each other for it.
#pragma once

#include <windows.h>

namespace device {

// One device-control request. The buffers belong to the caller of DeviceIoControl and are valid only
// during Control(), except the memory that a direct-I/O request asks the driver to map.
struct Request {
    DWORD Code;
    const void* Input;
    DWORD InputLength;
    void* Output;
    DWORD OutputLength;
    DWORD BytesReturned;  // set by the driver; 0 on entry
};

// Called on any thread, several at once: an implementation does its own locking. Results are
// system error codes.
class Driver {
public:
    // ERROR_FILE_NOT_FOUND when `path` names no device of this driver. On success `*file` is the
    // driver's own object for the new file handle.
    virtual DWORD Open(const WCHAR* path, void** file) = 0;

    // The handle of `file` was closed and every Control() of it has returned. Called exactly once for
    // each successful Open, on the thread that ended last; no lock of the system's is held.
    virtual void Close(void* file) = 0;

    // ERROR_SUCCESS, ERROR_IO_PENDING (DeviceIoControl then fails with that code; the operation never
    // completes, and its caller sees 0 bytes returned), or a failure. No lock of the system's is held.
    virtual DWORD Control(void* file, Request& request) = 0;

protected:
    ~Driver() = default;
};

// A call that a driver queues to a thread. It runs when that thread next waits alertably.
using ProcedureCall = void(CALLBACK*)(ULONG_PTR, ULONG_PTR, ULONG_PTR);

}  // namespace device
