// The installable wave driver behind the wave calls: loaded at the first of them, and then its two
// message entries.
#pragma once

#include <windows.h>
#include <mmsystem.h>

namespace front {

enum class WaveDirection { Out, In };

// A stretch of time in which the driver stays loaded. The first one of the process loads it: the
// library "kestvox.dll" (or the one that the host takes in its place), then DRV_LOAD, DRV_ENABLE and
// DRV_OPEN. A driver that does not load is not tried again before
// UnloadWaveDriver. While it is being unloaded, no new stretch finds it loaded.
class WaveDriverUse {
public:
    WaveDriverUse();
    ~WaveDriverUse();
    WaveDriverUse(const WaveDriverUse&) = delete;
    WaveDriverUse& operator=(const WaveDriverUse&) = delete;

    // Whether the driver is loaded and has an entry for this direction.
    bool Serves(WaveDirection direction) const;

    // The driver's answer; MMSYSERR_NODRIVER when it does not serve the direction. No lock is held
    // meanwhile.
    DWORD Send(WaveDirection direction, UINT device, UINT message, DWORD_PTR user, DWORD_PTR first,
               DWORD_PTR second) const;

    // To the driver's DriverProc; 0 when it is not loaded.
    LRESULT SendToDriver(DWORD_PTR id, UINT message, LPARAM first, LPARAM second) const;

    // Null when it is not loaded.
    HMODULE Module() const;

private:
    bool loaded_;
};

// DRV_CLOSE, DRV_DISABLE, DRV_FREE and out with it, when all uses have ended. Not from inside one.
void ReleaseWaveDriver();

}  // namespace front
