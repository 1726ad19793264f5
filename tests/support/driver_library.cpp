#include "tests/support/driver_library.h"

#include "tests/support/system.h"

DriverLibrary::DriverLibrary() : module_(test_system::LoadDriver()) {
    if (module_ != nullptr) {
        driverProc_ = test_system::DriverEntry<DRIVERPROC>(module_, "DriverProc");
        wodMessage_ = test_system::DriverEntry<WaveMessage>(module_, "wodMessage");
        widMessage_ = test_system::DriverEntry<WaveMessage>(module_, "widMessage");
    }
}

DriverLibrary::~DriverLibrary() {
    if (module_ != nullptr) {
        FreeLibrary(module_);
    }
}

LRESULT DriverLibrary::DriverProc(UINT message, LPARAM param1, LPARAM param2) const {
    return driverProc_(1, reinterpret_cast<HDRVR>(module_), message, param1, param2);
}

MMRESULT DriverLibrary::WaveOut(UINT device, UINT message, DWORD_PTR user, DWORD_PTR param1,
                                DWORD_PTR param2) const {
    return wodMessage_(device, message, user, param1, param2);
}

MMRESULT DriverLibrary::WaveIn(UINT device, UINT message, DWORD_PTR user, DWORD_PTR param1,
                               DWORD_PTR param2) const {
    return widMessage_(device, message, user, param1, param2);
}
