#include "stream/driver_mutex.h"

namespace kestvox {

HANDLE DriverMutex = nullptr;

HANDLE CreateSharedMutex(const WCHAR* name) {
    // A null access list lets every process of every user open the mutex.
    SECURITY_DESCRIPTOR descriptor;
    InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, FALSE);
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, &descriptor, FALSE};
    return CreateMutexW(&attributes, FALSE, name);
}

BOOL OpenDriverMutex() {
    DriverMutex = CreateSharedMutex(TEXT("ZPH_Kestrelvox_Wave_Driver_Mutex"));
    return DriverMutex != nullptr;
}

void CloseDriverMutex() {
    CloseHandle(DriverMutex);
    DriverMutex = nullptr;
}

DriverLock::~DriverLock() {
    if (result_ == WAIT_OBJECT_0 || result_ == WAIT_ABANDONED) {
        ReleaseMutex(DriverMutex);
    }
}

}  // namespace kestvox
