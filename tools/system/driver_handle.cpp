#include "tools/system/driver_handle.h"

#include "tools/command_error.h"

namespace kestvox {

DriverHandle::DriverHandle() : handle_(OpenDriver(DriverFile, nullptr, 0)) {
    if (!handle_) {
        throw CommandError("the driver kestvox.dll does not load");
    }
}

DriverHandle::~DriverHandle() {
    CloseDriver(handle_, 0, 0);
}

LRESULT DriverHandle::Send(UINT message, LPARAM first, LPARAM second) {
    return SendDriverMessage(handle_, message, first, second);
}

}  // namespace kestvox
