// What the waveOut and the waveIn calls do alike: each function here serves the calls of both directions.
//
// Device handles are values that are never given out twice, so that a closed one stays bad. No lock is held
// while the driver or the client runs, so every function may be called from any thread and from inside a
// client's callback. Results are those of the wave calls.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include "front/wave_driver.h"

namespace front {

// An open device's handle or, where the calls allow it, a device number or WAVE_MAPPER in a handle's place.
using WaveHandle = ULONG_PTR;

UINT WaveDeviceCount(WaveDirection direction);

// `capsSize` is the size of the whole structure, `size` the room that the caller has.
MMRESULT GetWaveCaps(WaveDirection direction, WaveHandle device, void* caps, UINT capsSize, UINT size);

struct WaveOpenRequest {
    // Or WAVE_MAPPER: the first device that takes the format, else the first that it can be converted for.
    // With WAVE_MAPPED it may be converted for this device. WAVE_FORMAT_DIRECT forbids conversion.
    UINT Device;
    LPCWAVEFORMATEX Format;
    DWORD_PTR Callback;
    DWORD_PTR Instance;
    DWORD Flags;
};
MMRESULT OpenWave(WaveDirection direction, const WaveOpenRequest& request, WaveHandle* handle);

// The handle stays good when the driver refuses.
MMRESULT CloseWave(WaveDirection direction, WaveHandle handle);

MMRESULT GetWaveId(WaveDirection direction, WaveHandle handle, UINT* device);

// A driver that answers MMSYSERR_NOTSUPPORTED leaves the preparation to the front.
MMRESULT PrepareWaveHeader(WaveDirection direction, WaveHandle handle, WAVEHDR* header, UINT size);
MMRESULT UnprepareWaveHeader(WaveDirection direction, WaveHandle handle, WAVEHDR* header, UINT size);

// Gives a prepared header to the driver, to play or to fill.
MMRESULT QueueWaveHeader(WaveDirection direction, WaveHandle handle, WAVEHDR* header, UINT size);

MMRESULT GetWavePosition(WaveDirection direction, WaveHandle handle, MMTIME* time, UINT size);

// Sends a message to an open device.
MMRESULT SendWave(WaveDirection direction, WaveHandle handle, UINT message, DWORD_PTR first = 0,
                  DWORD_PTR second = 0);

// Sends a message to an open device or, given a device number, to that device without an open instance.
MMRESULT SendWaveOrId(WaveDirection direction, WaveHandle device, UINT message, DWORD_PTR first,
                      DWORD_PTR second);

}  // namespace front
