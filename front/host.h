// What the multimedia front needs of the system that it runs on. One source file per system implements it.
#pragma once

#include <windows.h>
#include <mmsystem.h>

namespace front::host {

// The library of the wave driver, with the cards that it drives. Null when it does not load.
HMODULE LoadDriverLibrary();
void FreeDriverLibrary(HMODULE library);

bool IsEvent(HANDLE handle);

// Installable drivers other than the wave driver: null, or 0, where the system has none.
HDRVR OpenOtherDriver(LPCWSTR name, LPCWSTR section, LPARAM parameter);
LRESULT SendToOtherDriver(HDRVR driver, UINT message, LPARAM first, LPARAM second);
LRESULT CloseOtherDriver(HDRVR driver, LPARAM first, LPARAM second);
HMODULE ModuleOfOtherDriver(HDRVR driver);

}  // namespace front::host
