// The calls with text in the system's code page, and those for pitch and playback rate, which a driver may
// refuse.
#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

#include <algorithm>
#include <cstring>

#include "front/wave_device.h"

namespace {

using front::WaveDirection;
using front::WaveHandle;

// Both strings of `size` characters, terminators included; what does not fit is cut off.
void ToAnsi(LPCWSTR wide, char* text, int size) {
    if (size > 0 && WideCharToMultiByte(CP_ACP, 0, wide, -1, text, size, nullptr, nullptr) == 0) {
        text[size - 1] = '\0';
    }
}

// `Wide` and `Ansi` are the same structure but for the device's name.
template <typename Wide, typename Ansi>
MMRESULT CopyCaps(MMRESULT result, const Wide& wide, Ansi* caps, UINT size) {
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    Ansi ansi = {};
    ansi.wMid = wide.wMid;
    ansi.wPid = wide.wPid;
    ansi.vDriverVersion = wide.vDriverVersion;
    ToAnsi(wide.szPname, ansi.szPname, sizeof ansi.szPname);
    ansi.dwFormats = wide.dwFormats;
    ansi.wChannels = wide.wChannels;
    if constexpr (requires { ansi.dwSupport; }) {
        ansi.dwSupport = wide.dwSupport;
    }
    std::memcpy(caps, &ansi, std::min<size_t>(size, sizeof ansi));
    return result;
}

MMRESULT GetErrorTextA(MMRESULT error, LPSTR text, UINT size) {
    if (!text) {
        return MMSYSERR_INVALPARAM;
    }
    WCHAR wide[MAXERRORLENGTH];
    const MMRESULT result = waveOutGetErrorTextW(error, wide, MAXERRORLENGTH);
    if (result == MMSYSERR_NOERROR) {
        ToAnsi(wide, text, static_cast<int>(std::min<UINT>(size, MAXERRORLENGTH)));
    }
    return result;
}

MMRESULT SendOutput(HWAVEOUT handle, UINT message, DWORD_PTR parameter) {
    return front::SendWave(WaveDirection::Out, reinterpret_cast<WaveHandle>(handle), message, parameter);
}

MMRESULT SendOutput(HWAVEOUT handle, UINT message, LPDWORD answer) {
    return answer ? SendOutput(handle, message, reinterpret_cast<DWORD_PTR>(answer)) : MMSYSERR_INVALPARAM;
}

}  // namespace

MMRESULT WINAPI waveOutGetDevCapsA(UINT_PTR device, LPWAVEOUTCAPSA caps, UINT size) {
    WAVEOUTCAPSW wide = {};
    return caps ? CopyCaps(waveOutGetDevCapsW(device, &wide, sizeof wide), wide, caps, size)
                : MMSYSERR_INVALPARAM;
}

MMRESULT WINAPI waveInGetDevCapsA(UINT_PTR device, LPWAVEINCAPSA caps, UINT size) {
    WAVEINCAPSW wide = {};
    return caps ? CopyCaps(waveInGetDevCapsW(device, &wide, sizeof wide), wide, caps, size)
                : MMSYSERR_INVALPARAM;
}

MMRESULT WINAPI waveOutGetErrorTextA(MMRESULT error, LPSTR text, UINT size) {
    return GetErrorTextA(error, text, size);
}

MMRESULT WINAPI waveInGetErrorTextA(MMRESULT error, LPSTR text, UINT size) {
    return GetErrorTextA(error, text, size);
}

MMRESULT WINAPI waveOutGetPitch(HWAVEOUT handle, LPDWORD pitch) {
    return SendOutput(handle, WODM_GETPITCH, pitch);
}

MMRESULT WINAPI waveOutSetPitch(HWAVEOUT handle, DWORD pitch) {
    return SendOutput(handle, WODM_SETPITCH, DWORD_PTR{pitch});
}

MMRESULT WINAPI waveOutGetPlaybackRate(HWAVEOUT handle, LPDWORD rate) {
    return SendOutput(handle, WODM_GETPLAYBACKRATE, rate);
}

MMRESULT WINAPI waveOutSetPlaybackRate(HWAVEOUT handle, DWORD rate) {
    return SendOutput(handle, WODM_SETPLAYBACKRATE, DWORD_PTR{rate});
}

extern "C" HDRVR WINAPI OpenDriverA(LPCSTR name, LPCSTR section, LPARAM parameter) {
    WCHAR wideName[MAX_PATH] = {};
    WCHAR wideSection[MAX_PATH] = {};
    const auto widen = [](LPCSTR text, WCHAR* wide) {
        return MultiByteToWideChar(CP_ACP, 0, text, -1, wide, MAX_PATH) != 0;
    };
    if (!name || !widen(name, wideName) || (section && !widen(section, wideSection))) {
        return nullptr;
    }
    return OpenDriver(wideName, section ? wideSection : nullptr, parameter);
}
