// What the front needs of the system that it runs on. host_linux.cpp and host_windows.cpp implement it.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <memory>

#include "front/conversion.h"
#include "front/wave_driver.h"

namespace front::host {

// The library of the wave driver, with the cards that it drives. Null when it does not load.
HMODULE LoadDriverLibrary();
void FreeDriverLibrary(HMODULE library);

// For whoever looks on: a device has been opened, in the format that the driver has got, has been closed, or
// has refused to open.
void NoteOpened(WaveDirection direction, UINT device, const WAVEFORMATEX& format);
void NoteClosed(WaveDirection direction, UINT device);
void NoteRefused(WaveDirection direction, UINT device);

// A header is about to be handed to the driver, has been taken or refused by it, or has come back. Comes only
// while somebody looks on at headers.
enum class HeaderEvent { Queued, Taken, Refused, Returned };
bool WatchesHeaders();
void NoteHeader(HeaderEvent event, WaveDirection direction, UINT device, const WAVEHDR* header);
// A reset has taken back what the driver had of the device's headers. This, too, comes only then.
void NoteReset(WaveDirection direction, UINT device);

// Whether a client may give this handle as the event of CALLBACK_EVENT.
bool IsEvent(HANDLE handle);

// The system's converter between two formats, each with its cbSize bytes behind it. Null when it has none.
std::unique_ptr<Conversion> OpenConversion(const WAVEFORMATEX& from, const WAVEFORMATEX& to);

// Installable drivers other than the wave driver. The answers are null, or 0, where the system has none.
HDRVR OpenOtherDriver(LPCWSTR name, LPCWSTR section, LPARAM parameter);
LRESULT SendToOtherDriver(HDRVR driver, UINT message, LPARAM first, LPARAM second);
LRESULT CloseOtherDriver(HDRVR driver, LPARAM first, LPARAM second);
HMODULE ModuleOfOtherDriver(HDRVR driver);

}  // namespace front::host
