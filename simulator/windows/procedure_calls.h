// Procedure calls on their way to threads, and whether what they set off is over.
#pragma once

#include <windows.h>

#include "simulator/machine/host.h"

namespace simulator::windows {

// QueueUserAPC and the alertable waits, as an attached module calls them. host::QueueCall and
// host::WaitUntilQuiet see what goes through them.
DWORD WINAPI QueueUserCall(PAPCFUNC routine, HANDLE thread, ULONG_PTR data);
DWORD WINAPI WaitForObject(HANDLE object, DWORD milliseconds, BOOL alertable);
DWORD WINAPI SleepAlertably(DWORD milliseconds, BOOL alertable);

// Lets go of threads that have ended without waiting again.
void ForgetEndedThreads();

}  // namespace simulator::windows
