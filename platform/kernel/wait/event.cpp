#include "platform/kernel/call_failure.h"
#include "platform/kernel/wait/event_object.h"

using namespace platform;

// Names are not looked at: events are not shared between processes.
HANDLE WINAPI CreateEventW(LPSECURITY_ATTRIBUTES, BOOL bManualReset, BOOL bInitialState, LPCWSTR) {
    if (CallFails("CreateEventW")) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    const HANDLE handle =
        OpenHandle(std::make_shared<EventObject>(bManualReset == FALSE, bInitialState != FALSE));
    SetLastError(handle != nullptr ? ERROR_SUCCESS : ERROR_NOT_ENOUGH_MEMORY);
    return handle;
}

BOOL WINAPI SetEvent(HANDLE hEvent) {
    const std::shared_ptr<EventObject> event = FindObject<EventObject>(hEvent);
    if (!event) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    event->Signal();
    return TRUE;
}
