#include "entry/device_capabilities.h"

#include "card/card_table.h"
#include "config_ui/resource.h"
#include "entry/module.h"
#include "kestvox_version.h"

namespace kestvox {

namespace {

// The same for every card, port and direction.
constexpr WORD ManufacturerId = 0x5A48;
constexpr WORD ProductId = 0x0001;

constexpr WORD DriverVersion = KESTVOX_VERSION_MAJOR << 8 | KESTVOX_VERSION_MINOR;
constexpr DWORD StandardFormats = 0x00000FFF;  // 11.025 kHz mono 8-bit to 44.1 kHz stereo 16-bit
constexpr WORD MostChannels = 2;
constexpr int DeviceNameLength = 31;  // terminator included: one less than the field holds

constexpr int LongestNameFormat = 50;

void FormatDeviceName(const CardRecord& card, DWORD port, WCHAR* name) {
    WCHAR format[LongestNameFormat + 1] = {};
    LoadStringW(ModuleHandle, port == 0 ? IDS_ANALOG_DEVICE : IDS_DIGITAL_DEVICE, format, LongestNameFormat);
    WCHAR full[LongestNameFormat + NameLength] = {};
    wsprintfW(full, format, card.Name);
    lstrcpynW(name, full, DeviceNameLength);
}

// What both structures have in common.
template <typename Capabilities>
MMRESULT FillCommon(UINT device, Capabilities* capabilities) {
    if (capabilities == nullptr) {
        return MMSYSERR_INVALPARAM;
    }
    const CardRecord* card = FindCard(device >> 1);
    if (card == nullptr) {
        return MMSYSERR_BADDEVICEID;
    }
    if (card->EnableCount == 0) {
        return MMSYSERR_NOTENABLED;
    }
    *capabilities = {};
    capabilities->wMid = ManufacturerId;
    capabilities->wPid = ProductId;
    capabilities->vDriverVersion = DriverVersion;
    FormatDeviceName(*card, device & 1, capabilities->szPname);
    capabilities->dwFormats = StandardFormats;
    capabilities->wChannels = MostChannels;
    return MMSYSERR_NOERROR;
}

}  // namespace

DWORD CountDevices() {
    DWORD enabled = 0;
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        enabled += card->EnableCount != 0;
    }
    return enabled * PortCount;
}

MMRESULT GetOutputCapabilities(UINT device, WAVEOUTCAPSW* capabilities) {
    const MMRESULT result = FillCommon(device, capabilities);
    if (result == MMSYSERR_NOERROR) {
        capabilities->dwSupport = WAVECAPS_VOLUME | WAVECAPS_SAMPLEACCURATE;
    }
    return result;
}

MMRESULT GetInputCapabilities(UINT device, WAVEINCAPSW* capabilities) {
    return FillCommon(device, capabilities);
}

}  // namespace kestvox
