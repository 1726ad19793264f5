// Files: the platform has devices only, and those belong to the installed device::Driver.
#include <atomic>

#include "platform/device.h"
#include "platform/kernel/call_failure.h"
#include "platform/kernel/handles.h"
#include "platform/kernel/wait/event_object.h"

namespace platform {

namespace {

std::atomic<device::Driver*> installedDriver{nullptr};

class DeviceFile : public KernelObject {
public:
    static constexpr HandleKind ObjectKind = HandleKind::DeviceFile;

    DeviceFile(device::Driver* driver, void* file) : KernelObject(ObjectKind), driver_(driver), file_(file) {}
    ~DeviceFile() override { driver_->Close(file_); }

    DWORD Control(device::Request& request) { return driver_->Control(file_, request); }

private:
    device::Driver* const driver_;
    void* const file_;
};

// Several threads may use one OVERLAPPED at the same time as long as their requests complete at once, so its
// fields are written atomically.
void Store(ULONG_PTR& field, ULONG_PTR value) {
    std::atomic_ref<ULONG_PTR>(field).store(value, std::memory_order_relaxed);
}

// A request begins with its event reset, even when it fails.
void BeginOverlapped(OVERLAPPED* overlapped, EventObject* event) {
    if (event != nullptr) {
        event->Reset();
    }
    Store(overlapped->Internal, STATUS_PENDING);
    Store(overlapped->InternalHigh, 0);
}

// Only a success is written to the OVERLAPPED; a failure is what the call itself answers.
void CompleteOverlapped(OVERLAPPED* overlapped, EventObject* event, DWORD bytes) {
    Store(overlapped->Internal, 0);
    Store(overlapped->InternalHigh, bytes);
    if (event != nullptr) {
        event->Signal();
    }
}

}  // namespace

device::Driver* InstallDeviceDriver(device::Driver* driver) {
    return installedDriver.exchange(driver);
}

}  // namespace platform

using namespace platform;

static DWORD OpenDevice(LPCWSTR path, HANDLE* handle) {
    device::Driver* driver = installedDriver.load();
    if (CallFails("CreateFileW") || driver == nullptr) {
        return ERROR_FILE_NOT_FOUND;
    }
    void* file = nullptr;
    const DWORD error = driver->Open(path, &file);
    if (error != ERROR_SUCCESS) {
        return error;
    }
    *handle = OpenHandle(std::make_shared<DeviceFile>(driver, file));
    return *handle == nullptr ? ERROR_NOT_ENOUGH_MEMORY : ERROR_SUCCESS;
}

HANDLE WINAPI CreateFileW(LPCWSTR lpFileName, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE) {
    HANDLE handle = nullptr;
    const DWORD error = OpenDevice(lpFileName, &handle);
    SetLastError(error);
    return error == ERROR_SUCCESS ? handle : INVALID_HANDLE_VALUE;
}

BOOL WINAPI DeviceIoControl(HANDLE hDevice, DWORD dwIoControlCode, LPVOID lpInBuffer, DWORD nInBufferSize,
                            LPVOID lpOutBuffer, DWORD nOutBufferSize, LPDWORD lpBytesReturned,
                            LPOVERLAPPED lpOverlapped) {
    const std::shared_ptr<DeviceFile> file = FindObject<DeviceFile>(hDevice);
    if (!file) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    OVERLAPPED own{};  // a request without one is over with the call
    OVERLAPPED* overlapped = lpOverlapped == nullptr ? &own : lpOverlapped;
    const std::shared_ptr<EventObject> event = FindObject<EventObject>(overlapped->hEvent);
    BeginOverlapped(overlapped, event.get());
    device::Request request{dwIoControlCode, lpInBuffer, nInBufferSize, lpOutBuffer, nOutBufferSize, 0};
    const DWORD error = file->Control(request);
    if (error != ERROR_SUCCESS && error != ERROR_IO_PENDING) {
        SetLastError(error);
        return FALSE;
    }
    if (lpBytesReturned != nullptr) {
        *lpBytesReturned = error == ERROR_SUCCESS ? request.BytesReturned : 0;
    }
    if (error == ERROR_IO_PENDING) {
        SetLastError(error);
        return FALSE;
    }
    CompleteOverlapped(overlapped, event.get(), request.BytesReturned);
    return TRUE;
}
