// The playback calls of the multimedia system.
#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

#include "front/wave_device.h"

namespace {

constexpr auto Output = platform::WaveDirection::Out;

platform::WaveHandle Value(HWAVEOUT handle) {
    return reinterpret_cast<platform::WaveHandle>(handle);
}

}  // namespace

UINT WINAPI waveOutGetNumDevs() {
    return platform::WaveDeviceCount(Output);
}

MMRESULT WINAPI waveOutGetDevCapsW(UINT_PTR device, LPWAVEOUTCAPSW caps, UINT size) {
    return platform::GetWaveCaps(Output, device, caps, sizeof *caps, size);
}

MMRESULT WINAPI waveOutOpen(LPHWAVEOUT handle, UINT device, LPCWAVEFORMATEX format, DWORD_PTR callback,
                            DWORD_PTR instance, DWORD flags) {
    if (!handle && !(flags & WAVE_FORMAT_QUERY)) {
        return MMSYSERR_INVALPARAM;
    }
    platform::WaveHandle opened = 0;
    const MMRESULT result = platform::OpenWave(Output, {device, format, callback, instance, flags}, &opened);
    if (opened != 0) {
        *handle = reinterpret_cast<HWAVEOUT>(opened);
    }
    return result;
}

MMRESULT WINAPI waveOutClose(HWAVEOUT handle) {
    return platform::CloseWave(Output, Value(handle));
}

MMRESULT WINAPI waveOutPrepareHeader(HWAVEOUT handle, LPWAVEHDR header, UINT size) {
    return platform::PrepareWaveHeader(Output, Value(handle), header, size);
}

MMRESULT WINAPI waveOutUnprepareHeader(HWAVEOUT handle, LPWAVEHDR header, UINT size) {
    return platform::UnprepareWaveHeader(Output, Value(handle), header, size);
}

MMRESULT WINAPI waveOutWrite(HWAVEOUT handle, LPWAVEHDR header, UINT size) {
    return platform::QueueWaveHeader(Output, Value(handle), header, size);
}

MMRESULT WINAPI waveOutPause(HWAVEOUT handle) {
    return platform::SendWave(Output, Value(handle), WODM_PAUSE);
}

MMRESULT WINAPI waveOutRestart(HWAVEOUT handle) {
    return platform::SendWave(Output, Value(handle), WODM_RESTART);
}

MMRESULT WINAPI waveOutReset(HWAVEOUT handle) {
    return platform::SendWave(Output, Value(handle), WODM_RESET);
}

MMRESULT WINAPI waveOutBreakLoop(HWAVEOUT handle) {
    return platform::SendWave(Output, Value(handle), WODM_BREAKLOOP);
}

MMRESULT WINAPI waveOutGetPosition(HWAVEOUT handle, LPMMTIME time, UINT size) {
    return platform::GetWavePosition(Output, Value(handle), time, size);
}

// The volume is the device's, so that the system allows a device number here. Whether it means
// anything without an open instance is the driver's to say.
MMRESULT WINAPI waveOutGetVolume(HWAVEOUT device, LPDWORD volume) {
    if (!volume) {
        return MMSYSERR_INVALPARAM;
    }
    return platform::SendWaveOrId(Output, Value(device), WODM_GETVOLUME, reinterpret_cast<DWORD_PTR>(volume),
                                  0);
}

MMRESULT WINAPI waveOutSetVolume(HWAVEOUT device, DWORD volume) {
    return platform::SendWaveOrId(Output, Value(device), WODM_SETVOLUME, volume, 0);
}

MMRESULT WINAPI waveOutGetID(HWAVEOUT handle, LPUINT device) {
    return platform::GetWaveId(Output, Value(handle), device);
}

MMRESULT WINAPI waveOutMessage(HWAVEOUT device, UINT message, DWORD_PTR first, DWORD_PTR second) {
    return platform::SendWaveOrId(Output, Value(device), message, first, second);
}
