// The wave calls without their names: what waveOut and waveIn do alike, by direction.
//
// Device handles are values that are never given out twice, so that a closed one stays bad. No lock
// is held while the driver or the client runs: every function here may be called from any thread and
// from inside a client's callback. Results are those of the wave calls.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include "front/wave_driver.h"

namespace front {

// An open device's handle or, where the calls allow it, a device number in a handle's place.
using WaveHandle = ULONG_PTR;

UINT WaveDeviceCount(WaveDirection direction);

// `capsSize` is the structure's, `size` what the caller has room for.
MMRESULT GetWaveCaps(WaveDirection direction, WaveHandle device, void* caps, UINT capsSize, UINT size);

struct WaveOpenRequest {
    UINT Device;  // or WAVE_MAPPER: the first device that opens
    LPCWAVEFORMATEX Format;
    DWORD_PTR Callback;
    DWORD_PTR Instance;
    DWORD Flags;
};
MMRESULT OpenWave(WaveDirection direction, const WaveOpenRequest& request, WaveHandle* handle);

// The handle goes bad when the driver has accepted.
MMRESULT CloseWave(WaveDirection direction, WaveHandle handle);

MMRESULT GetWaveId(WaveDirection direction, WaveHandle handle, UINT* device);

// Asks the driver first, and does it here when the driver does not want to.
MMRESULT PrepareWaveHeader(WaveDirection direction, WaveHandle handle, WAVEHDR* header, UINT size);
MMRESULT UnprepareWaveHeader(WaveDirection direction, WaveHandle handle, WAVEHDR* header, UINT size);

// Gives a prepared header to the driver, to play or to fill.
MMRESULT QueueWaveHeader(WaveDirection direction, WaveHandle handle, WAVEHDR* header, UINT size);

MMRESULT GetWavePosition(WaveDirection direction, WaveHandle handle, MMTIME* time, UINT size);

// To an open device.
MMRESULT SendWave(WaveDirection direction, WaveHandle handle, UINT message, DWORD_PTR first = 0,
                  DWORD_PTR second = 0);

// To an open device, or to a device number without an instance.
MMRESULT SendWaveOrId(WaveDirection direction, WaveHandle device, UINT message, DWORD_PTR first,
                      DWORD_PTR second);

}  // namespace front
