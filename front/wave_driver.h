// Loading the wave driver, which happens at the first wave call, and sending it messages.
#pragma once

#include <windows.h>
#include <mmsystem.h>

namespace front {

enum class WaveDirection { Out, In };

// Keeps the driver loaded as long as this lives. The first use in the process loads it: the library
// "kestvox.dll" (or the one that the host takes in its place), then DRV_LOAD, DRV_ENABLE and DRV_OPEN.
// A driver that did not load is not tried again before UnloadWaveDriver. A use that begins while the driver
// is being unloaded finds it not loaded.
class WaveDriverUse {
public:
    WaveDriverUse();
    ~WaveDriverUse();
    WaveDriverUse(const WaveDriverUse&) = delete;
    WaveDriverUse& operator=(const WaveDriverUse&) = delete;

    // Whether the driver is loaded and has an entry for this direction.
    bool Serves(WaveDirection direction) const;

    // Sends a message to the driver's wave entry and answers what it answers; MMSYSERR_NODRIVER when the
    // driver does not serve the direction. No lock is held meanwhile.
    DWORD Send(WaveDirection direction, UINT device, UINT message, DWORD_PTR user, DWORD_PTR first,
               DWORD_PTR second) const;

    // Sends a message to the driver's DriverProc. The answer is 0 when the driver is not loaded.
    LRESULT SendToDriver(DWORD_PTR id, UINT message, LPARAM first, LPARAM second) const;

    // Null when it is not loaded.
    HMODULE Module() const;

private:
    bool loaded_;
};

// Waits until all uses have ended, sends DRV_CLOSE, DRV_DISABLE and DRV_FREE and unloads the library. Must
// not be called during a use.
void ReleaseWaveDriver();

}  // namespace front
