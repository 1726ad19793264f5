// Files: the platform has devices only, and those belong to the installed device::Driver.
#include <atomic>
#include <string_view>

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

    DeviceFile(device::Driver* driver, void* file, bool overlapped)
        : KernelObject(ObjectKind), Overlapped(overlapped), driver_(driver), file_(file) {}
    ~DeviceFile() override { driver_->Close(file_); }

    DWORD Control(device::Request& request) { return driver_->Control(file_, request); }

    const bool Overlapped;

private:
    device::Driver* const driver_;
    void* const file_;
};

// Several threads may use one OVERLAPPED at the same time as long as their requests complete at once, so its
// fields are written atomically.
void Store(ULONG_PTR& field, ULONG_PTR value) {
    std::atomic_ref<ULONG_PTR>(field).store(value, std::memory_order_relaxed);
}

// An overlapped request begins with its event reset, even when it fails.
bool BeginOverlapped(OVERLAPPED* overlapped, std::shared_ptr<EventObject>* event) {
    if (overlapped == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return false;
    }
    if (overlapped->hEvent != nullptr) {
        *event = FindObject<EventObject>(overlapped->hEvent);
        if (!*event) {
            SetLastError(ERROR_INVALID_HANDLE);
            return false;
        }
        (*event)->Reset();
    }
    Store(overlapped->Internal, STATUS_PENDING);
    Store(overlapped->InternalHigh, 0);
    return true;
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

static DWORD OpenDevice(LPCWSTR path, DWORD flags, HANDLE* handle) {
    device::Driver* driver = installedDriver.load();
    if (CallFails("CreateFileW") || path == nullptr ||
        !std::u16string_view(path).starts_with(TEXT("\\\\.\\")) || driver == nullptr) {
        return ERROR_FILE_NOT_FOUND;
    }
    void* file = nullptr;
    const DWORD error = driver->Open(path, &file);
    if (error != ERROR_SUCCESS) {
        return error;
    }
    *handle = OpenHandle(std::make_shared<DeviceFile>(driver, file, (flags & FILE_FLAG_OVERLAPPED) != 0));
    return *handle == nullptr ? ERROR_NOT_ENOUGH_MEMORY : ERROR_SUCCESS;
}

HANDLE WINAPI CreateFileW(LPCWSTR lpFileName, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD,
                          DWORD dwFlagsAndAttributes, HANDLE) {
    HANDLE handle = nullptr;
    const DWORD error = OpenDevice(lpFileName, dwFlagsAndAttributes, &handle);
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
    OVERLAPPED own{};  // a request to a file that is not overlapped is over with the call
    OVERLAPPED* overlapped = lpOverlapped == nullptr && !file->Overlapped ? &own : lpOverlapped;
    std::shared_ptr<EventObject> event;
    if (!BeginOverlapped(overlapped, &event)) {
        return FALSE;
    }
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
