#include "front/device_query.h"

#include <mmddk.h>
#include <mmreg.h>

#include <algorithm>
#include <string>

namespace front {

namespace {

constexpr UINT Mapper16 = 0xFFFF;
constexpr UINT DevicesPerCard = 2;

std::basic_string<WCHAR> InterfaceName(UINT device) {
    WCHAR name[32];
    wsprintfW(name, TEXT("\\\\.\\Kestrelvox%u"), device / DevicesPerCard);
    return name;
}

MMRESULT CopyInterfaceName(UINT device, WCHAR* name, size_t size) {
    const std::basic_string<WCHAR> whole = InterfaceName(device);
    const size_t length = whole.size() + 1;
    if (!name || size / sizeof(WCHAR) < length) {
        return MMSYSERR_INVALPARAM;
    }
    std::copy_n(whole.c_str(), length, name);
    return MMSYSERR_NOERROR;
}

template <typename Caps>
void Rename(Caps& caps) {
    caps.wMid = MM_MICROSOFT;
    caps.wPid = MM_WAVE_MAPPER;
    lstrcpynW(caps.szPname, TEXT("Wave Mapper"), MAXPNAMELEN);
}

}  // namespace

bool IsMapper(WaveHandle device) {
    return static_cast<UINT>(device) == WAVE_MAPPER || device == Mapper16;
}

std::optional<MMRESULT> AnswerDeviceQuery(UINT device, UINT message, DWORD_PTR first, DWORD_PTR second) {
    switch (message) {
    case DRV_QUERYMAPPABLE:
        return MMSYSERR_NOERROR;
    case DRV_QUERYDEVICEINTERFACESIZE:
        if (first == 0) {
            return MMSYSERR_INVALPARAM;
        }
        *reinterpret_cast<DWORD*>(first) =
            static_cast<DWORD>((InterfaceName(device).size() + 1) * sizeof(WCHAR));
        return MMSYSERR_NOERROR;
    case DRV_QUERYDEVICEINTERFACE:
        return CopyInterfaceName(device, reinterpret_cast<WCHAR*>(first), second);
    default:
        return std::nullopt;
    }
}

std::optional<MMRESULT> AnswerMapperQuery(UINT count, UINT message, DWORD_PTR first, DWORD_PTR second) {
    switch (message) {
    case DRVM_MAPPER_PREFERRED_GET:
        if (first == 0 || second == 0) {
            return MMSYSERR_INVALPARAM;
        }
        *reinterpret_cast<DWORD*>(first) = count > 0 ? 0 : static_cast<DWORD>(-1);
        *reinterpret_cast<DWORD*>(second) = 0;  // other devices may be used, too
        return MMSYSERR_NOERROR;
    case DRV_QUERYMAPPABLE:
    case DRV_QUERYDEVICEINTERFACESIZE:
    case DRV_QUERYDEVICEINTERFACE:
        return MMSYSERR_NOTSUPPORTED;
    default:
        return std::nullopt;
    }
}

void DescribeMapper(WaveDirection direction, void* caps) {
    if (direction == WaveDirection::Out) {
        Rename(*static_cast<WAVEOUTCAPSW*>(caps));
    } else {
        Rename(*static_cast<WAVEINCAPSW*>(caps));
    }
}

}  // namespace front
