// What the multimedia front needs of the system that it runs on. One source file per system implements it.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <memory>

namespace platform::host {

// A lock, and a wait for a change of what it guards. BasicLockable; not recursive.
class Monitor {
public:
    Monitor();
    ~Monitor();
    Monitor(const Monitor&) = delete;
    Monitor& operator=(const Monitor&) = delete;

    void lock();
    void unlock();

    // REQUIRES: the lock, which is given up until NotifyAll. May return early.
    void Wait();
    // REQUIRES: the lock.
    void NotifyAll();

private:
    struct State;
    std::unique_ptr<State> state_;
};

// The library of the wave driver, with the cards that it drives. Null when it does not load.
HMODULE LoadDriverLibrary();
void FreeDriverLibrary(HMODULE library);

bool IsEvent(HANDLE handle);

// Installable drivers other than the wave driver: null, or 0, where the system has none.
HDRVR OpenOtherDriver(LPCWSTR name, LPCWSTR section, LPARAM parameter);
LRESULT SendToOtherDriver(HDRVR driver, UINT message, LPARAM first, LPARAM second);
LRESULT CloseOtherDriver(HDRVR driver, LPARAM first, LPARAM second);
HMODULE ModuleOfOtherDriver(HDRVR driver);

}  // namespace platform::host
