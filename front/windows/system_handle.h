// A handle of the system's that is closed with its owner.
#pragma once

#include <windows.h>

namespace front {

class SystemHandle {
public:
    explicit SystemHandle(HANDLE handle = nullptr)
        : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    ~SystemHandle() {
        if (handle_) {
            CloseHandle(handle_);
        }
    }
    SystemHandle(const SystemHandle&) = delete;
    SystemHandle& operator=(const SystemHandle&) = delete;
    operator HANDLE() const { return handle_; }

private:
    HANDLE handle_;
};

}  // namespace front
