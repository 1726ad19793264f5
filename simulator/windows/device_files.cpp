#include "simulator/windows/device_files.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>

#include "simulator/attach.h"
#include "simulator/machine/host.h"
#include "simulator/windows/mutex_waits.h"
#include "simulator/windows/procedure_calls.h"

namespace simulator {
namespace {

constexpr ULONG_PTR StatusPending = 0x103;

std::atomic<device::Driver*> installedDriver{nullptr};

// The driver hears of the end when the handle is closed and every request has returned.
struct DeviceFile {
    DeviceFile(device::Driver* driver, void* file, bool overlapped)
        : Driver(driver), File(file), Overlapped(overlapped) {}
    ~DeviceFile() { Driver->Close(File); }
    DeviceFile(const DeviceFile&) = delete;
    DeviceFile& operator=(const DeviceFile&) = delete;

    device::Driver* const Driver;
    void* const File;
    const bool Overlapped;
};
using FileReference = std::shared_ptr<DeviceFile>;

class OpenFiles {
public:
    void Add(HANDLE handle, FileReference file) {
        const std::lock_guard guard(lock_);
        files_[handle] = std::move(file);
    }
    FileReference Find(HANDLE handle) {
        const std::lock_guard guard(lock_);
        const auto found = files_.find(handle);
        return found == files_.end() ? nullptr : found->second;
    }
    FileReference Take(HANDLE handle) {
        const std::lock_guard guard(lock_);
        const auto found = files_.extract(handle);
        return found ? found.mapped() : nullptr;
    }

private:
    host::Lock lock_;
    std::map<HANDLE, FileReference> files_;
};

OpenFiles& Files() {
    static OpenFiles& files = *new OpenFiles;
    return files;
}

// A file that is there on every system and can be opened any number of times.
HANDLE NewHandle(DWORD access, DWORD share, DWORD flags) {
    return CreateFileW(L"\\\\.\\NUL", access, share, nullptr, OPEN_EXISTING, flags, nullptr);
}

// An overlapped request begins with its event reset, even when it fails.
DWORD Begin(OVERLAPPED& overlapped) {
    if (overlapped.hEvent != nullptr && !ResetEvent(overlapped.hEvent)) {
        return ERROR_INVALID_HANDLE;
    }
    overlapped.Internal = StatusPending;
    overlapped.InternalHigh = 0;
    return ERROR_SUCCESS;
}

void Complete(OVERLAPPED& overlapped, DWORD bytes) {
    overlapped.Internal = 0;
    overlapped.InternalHigh = bytes;
    if (overlapped.hEvent != nullptr) {
        SetEvent(overlapped.hEvent);
    }
}

DWORD Control(DeviceFile& file, device::Request& request, OVERLAPPED* overlapped) {
    OVERLAPPED own{};  // a request to a file that is not overlapped is over with the call
    if (overlapped == nullptr) {
        if (file.Overlapped) {
            return ERROR_INVALID_PARAMETER;
        }
        overlapped = &own;
    }
    DWORD result = Begin(*overlapped);
    if (result == ERROR_SUCCESS) {
        result = file.Driver->Control(file.File, request);
    }
    if (result == ERROR_SUCCESS) {
        Complete(*overlapped, request.BytesReturned);
    } else {
        request.BytesReturned = 0;
    }
    return result;
}

// A call that succeeds leaves the last error alone.
class LastErrorKeeper {
public:
    ~LastErrorKeeper() { SetLastError(error_); }
    void Report(DWORD error) { error_ = error; }

private:
    DWORD error_ = GetLastError();
};

}  // namespace

void host::InstallDriver(device::Driver* driver) {
    installedDriver = driver;
}

bool HasSimulator() {
    return installedDriver != nullptr;
}

namespace windows {

HANDLE WINAPI OpenFileOrDevice(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                               DWORD creation, DWORD flags, HANDLE pattern) {
    device::Driver* driver = installedDriver;
    if (driver == nullptr || path == nullptr || !std::wstring_view(path).starts_with(L"\\\\.\\")) {
        return CreateFileW(path, access, share, security, creation, flags, pattern);
    }
    void* file = nullptr;
    const DWORD error = driver->Open(path, &file);
    if (error != ERROR_SUCCESS) {
        SetLastError(error);
        return INVALID_HANDLE_VALUE;
    }
    FileReference opened = std::make_shared<DeviceFile>(driver, file, (flags & FILE_FLAG_OVERLAPPED) != 0);
    const HANDLE handle = NewHandle(access, share, flags);
    if (handle != INVALID_HANDLE_VALUE) {
        Files().Add(handle, std::move(opened));
    }
    return handle;
}

BOOL WINAPI ControlDevice(HANDLE device, DWORD code, LPVOID input, DWORD inputLength, LPVOID output,
                          DWORD outputLength, LPDWORD returned, LPOVERLAPPED overlapped) {
    LastErrorKeeper lastError;
    const FileReference file = Files().Find(device);
    if (!file) {
        const BOOL done =
            DeviceIoControl(device, code, input, inputLength, output, outputLength, returned, overlapped);
        lastError.Report(GetLastError());
        return done;
    }
    device::Request request{.Code = code,
                            .Input = input,
                            .InputLength = inputLength,
                            .Output = output,
                            .OutputLength = outputLength,
                            .BytesReturned = 0};
    const DWORD result = Control(*file, request, overlapped);
    if (returned != nullptr && (result == ERROR_SUCCESS || result == ERROR_IO_PENDING)) {
        *returned = request.BytesReturned;
    }
    if (result != ERROR_SUCCESS) {
        lastError.Report(result);
    }
    return result == ERROR_SUCCESS;
}

BOOL WINAPI CloseAnyHandle(HANDLE handle) {
    // Out of the list first: as soon as the handle is closed another file may get its number.
    Files().Take(handle);
    ForgetMutex(handle);
    ForgetEndedThreads();
    return CloseHandle(handle);
}

}  // namespace windows
}  // namespace simulator
