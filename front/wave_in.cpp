// The recording calls of the multimedia system.
#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

#include "front/wave_device.h"

namespace {

constexpr auto Input = front::WaveDirection::In;

front::WaveHandle Value(HWAVEIN handle) {
    return reinterpret_cast<front::WaveHandle>(handle);
}

}  // namespace

UINT WINAPI waveInGetNumDevs() {
    return front::WaveDeviceCount(Input);
}

MMRESULT WINAPI waveInGetDevCapsW(UINT_PTR device, LPWAVEINCAPSW caps, UINT size) {
    return front::GetWaveCaps(Input, device, caps, sizeof *caps, size);
}

MMRESULT WINAPI waveInOpen(LPHWAVEIN handle, UINT device, LPCWAVEFORMATEX format, DWORD_PTR callback,
                           DWORD_PTR instance, DWORD flags) {
    if (!handle && !(flags & WAVE_FORMAT_QUERY)) {
        return MMSYSERR_INVALPARAM;
    }
    front::WaveHandle opened = 0;
    const MMRESULT result = front::OpenWave(Input, {device, format, callback, instance, flags}, &opened);
    if (opened != 0) {
        *handle = reinterpret_cast<HWAVEIN>(opened);
    }
    return result;
}

MMRESULT WINAPI waveInClose(HWAVEIN handle) {
    return front::CloseWave(Input, Value(handle));
}

MMRESULT WINAPI waveInPrepareHeader(HWAVEIN handle, LPWAVEHDR header, UINT size) {
    return front::PrepareWaveHeader(Input, Value(handle), header, size);
}

MMRESULT WINAPI waveInUnprepareHeader(HWAVEIN handle, LPWAVEHDR header, UINT size) {
    return front::UnprepareWaveHeader(Input, Value(handle), header, size);
}

MMRESULT WINAPI waveInAddBuffer(HWAVEIN handle, LPWAVEHDR header, UINT size) {
    return front::QueueWaveHeader(Input, Value(handle), header, size);
}

MMRESULT WINAPI waveInStart(HWAVEIN handle) {
    return front::SendWave(Input, Value(handle), WIDM_START);
}

MMRESULT WINAPI waveInStop(HWAVEIN handle) {
    return front::SendWave(Input, Value(handle), WIDM_STOP);
}

MMRESULT WINAPI waveInReset(HWAVEIN handle) {
    return front::SendWave(Input, Value(handle), WIDM_RESET);
}

MMRESULT WINAPI waveInGetPosition(HWAVEIN handle, LPMMTIME time, UINT size) {
    return front::GetWavePosition(Input, Value(handle), time, size);
}

MMRESULT WINAPI waveInGetID(HWAVEIN handle, LPUINT device) {
    return front::GetWaveId(Input, Value(handle), device);
}

MMRESULT WINAPI waveInMessage(HWAVEIN device, UINT message, DWORD_PTR first, DWORD_PTR second) {
    return front::SendWaveOrId(Input, Value(device), message, first, second);
}
