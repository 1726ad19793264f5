// Any values, of any type and size, in place of the stored settings of two cards: the driver loads, both
// cards are there, and a port opens or is refused.
#include <windows.h>
#include <mmsystem.h>

#include <array>
#include <string>
#include <vector>

#include "fuzz/fresh_machine.h"
#include "fuzz/input_bytes.h"

namespace {

constexpr unsigned CardCount = 2;
constexpr UINT Ports = 2 * CardCount;  // of each direction

constexpr std::array Names = {
    TEXT("Left24"),      TEXT("AdvancedMonitoring"), TEXT("Punchin"),     TEXT("DitherADC"),
    TEXT("CheckClocks"), TEXT("Professional"),       TEXT("CopyProtect"), TEXT("NonAudio"),
    TEXT("Preemphasis"), TEXT("ClockSource"),        TEXT("Monitor"),     TEXT("Name"),
    TEXT("Master"),
};

// A card, a name, a type, a size, and as many bytes.
void StoreOne(InputBytes& input) {
    const unsigned card = input.TakeBelow(CardCount);
    const WCHAR* name = Names[input.TakeBelow(Names.size())];
    const DWORD type = input.TakeBelow(12);
    const std::vector<uint8_t> bytes = input.TakeBytes(input.Take<uint16_t>() % 2048);
    const std::u16string path = simulator::Simulator::RegistryPath(card) + u"\\Config";
    HKEY key = nullptr;
    Require(RegCreateKeyW(HKEY_LOCAL_MACHINE, path.c_str(), &key) == ERROR_SUCCESS, "no registry key");
    RegSetValueExW(key, name, 0, type, bytes.data(), static_cast<DWORD>(bytes.size()));
    RegCloseKey(key);
}

void TryPort(UINT device) {
    const WAVEFORMATEX format = {WAVE_FORMAT_PCM, 2, 44100, 4 * 44100, 4, 16, 0};
    HWAVEOUT out = nullptr;
    if (waveOutOpen(&out, device, &format, 0, 0, CALLBACK_NULL) == MMSYSERR_NOERROR) {
        Require(waveOutClose(out) == MMSYSERR_NOERROR, "an output does not close");
    }
    HWAVEIN in = nullptr;
    if (waveInOpen(&in, device, &format, 0, 0, CALLBACK_NULL) == MMSYSERR_NOERROR) {
        Require(waveInClose(in) == MMSYSERR_NOERROR, "an input does not close");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    InputBytes input(data, size);
    FreshMachine machine(CardCount);
    while (!input.Empty()) {
        StoreOne(input);
    }
    Require(waveOutGetNumDevs() == Ports && waveInGetNumDevs() == Ports, "a card is missing");
    for (UINT device = 0; device < Ports; ++device) {
        TryPort(device);
    }
    return 0;
}
