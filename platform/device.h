// What the platform layer's I/O side offers the driver of a device.
//
// The platform has no devices of its own. A component that models one (the simulated card) installs
// a device::Driver; CreateFileW, DeviceIoControl and CloseHandle then lead to it.
#pragma once

#include <windows.h>

#include <memory>

#include "device/device_driver.h"

namespace platform {

// One driver at a time; null removes it. The driver must outlive every open handle. Answers the one before,
// so that a driver can be put in front of another.
device::Driver* InstallDeviceDriver(device::Driver* driver);

// A thread as the kernel refers to it: stays valid after the thread and its handles are gone.
class ThreadObject;
using ThreadReference = std::shared_ptr<ThreadObject>;
ThreadReference CurrentThreadReference();

// Queues a user-mode procedure call with three arguments, as a kernel driver does. It runs on the
// thread when that thread next waits alertably. False when the thread has ended.
bool QueueProcedureCall(const ThreadReference& thread, device::ProcedureCall routine, ULONG_PTR first,
                        ULONG_PTR second, ULONG_PTR third);

// Waits until no thread of the process has a procedure call queued and every thread that ran one is
// back in an alertable wait (or has ended), so that everything a completion sets off has happened.
// False when that has not come about after `realMilliseconds` of real time.
bool WaitUntilQuiet(DWORD realMilliseconds);

}  // namespace platform
