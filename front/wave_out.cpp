// The playback calls of the multimedia system.
#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

#include "front/wave_device.h"

namespace {

constexpr auto Output = front::WaveDirection::Out;

front::WaveHandle Value(HWAVEOUT handle) {
    return reinterpret_cast<front::WaveHandle>(handle);
}

}  // namespace

UINT WINAPI waveOutGetNumDevs() {
    return front::WaveDeviceCount(Output);
}

MMRESULT WINAPI waveOutGetDevCapsW(UINT_PTR device, LPWAVEOUTCAPSW caps, UINT size) {
    return front::GetWaveCaps(Output, device, caps, sizeof *caps, size);
}

MMRESULT WINAPI waveOutOpen(LPHWAVEOUT handle, UINT device, LPCWAVEFORMATEX format, DWORD_PTR callback,
                            DWORD_PTR instance, DWORD flags) {
    if (!handle && !(flags & WAVE_FORMAT_QUERY)) {
        return MMSYSERR_INVALPARAM;
    }
    front::WaveHandle opened = 0;
    const MMRESULT result = front::OpenWave(Output, {device, format, callback, instance, flags}, &opened);
    if (opened != 0) {
        *handle = reinterpret_cast<HWAVEOUT>(opened);
    }
    return result;
}

MMRESULT WINAPI waveOutClose(HWAVEOUT handle) {
    return front::CloseWave(Output, Value(handle));
}

MMRESULT WINAPI waveOutPrepareHeader(HWAVEOUT handle, LPWAVEHDR header, UINT size) {
    return front::PrepareWaveHeader(Output, Value(handle), header, size);
}

MMRESULT WINAPI waveOutUnprepareHeader(HWAVEOUT handle, LPWAVEHDR header, UINT size) {
    return front::UnprepareWaveHeader(Output, Value(handle), header, size);
}

MMRESULT WINAPI waveOutWrite(HWAVEOUT handle, LPWAVEHDR header, UINT size) {
    return front::QueueWaveHeader(Output, Value(handle), header, size);
}

MMRESULT WINAPI waveOutPause(HWAVEOUT handle) {
    return front::SendWave(Output, Value(handle), WODM_PAUSE);
}

MMRESULT WINAPI waveOutRestart(HWAVEOUT handle) {
    return front::SendWave(Output, Value(handle), WODM_RESTART);
}

MMRESULT WINAPI waveOutReset(HWAVEOUT handle) {
    return front::SendWave(Output, Value(handle), WODM_RESET);
}

MMRESULT WINAPI waveOutBreakLoop(HWAVEOUT handle) {
    return front::SendWave(Output, Value(handle), WODM_BREAKLOOP);
}

MMRESULT WINAPI waveOutGetPosition(HWAVEOUT handle, LPMMTIME time, UINT size) {
    return front::GetWavePosition(Output, Value(handle), time, size);
}

// The volume is the device's, so that the system allows a device number here. Whether it means
// anything without an open instance is the driver's to say.
MMRESULT WINAPI waveOutGetVolume(HWAVEOUT device, LPDWORD volume) {
    if (!volume) {
        return MMSYSERR_INVALPARAM;
    }
    return front::SendWaveOrId(Output, Value(device), WODM_GETVOLUME, reinterpret_cast<DWORD_PTR>(volume), 0);
}

MMRESULT WINAPI waveOutSetVolume(HWAVEOUT device, DWORD volume) {
    return front::SendWaveOrId(Output, Value(device), WODM_SETVOLUME, volume, 0);
}

MMRESULT WINAPI waveOutGetID(HWAVEOUT handle, LPUINT device) {
    return front::GetWaveId(Output, Value(handle), device);
}

MMRESULT WINAPI waveOutMessage(HWAVEOUT device, UINT message, DWORD_PTR first, DWORD_PTR second) {
    return front::SendWaveOrId(Output, Value(device), message, first, second);
}
