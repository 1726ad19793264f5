// Any bytes as a wave format: every port answers an open as it answers a query, but for what only the open
// looks at, the rate that arrives at the digital input. Nothing beyond the format is read, and a stream that
// opens closes.
#include <windows.h>
#include <mmsystem.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "fuzz/fresh_machine.h"
#include "fuzz/input_bytes.h"

namespace {

constexpr UINT Ports = 2;  // of each direction
constexpr UINT DigitalInput = 1;
constexpr DWORD IncomingRate = 44100;

// As long as a format of its tag is and no byte longer, so that a read beyond it is noticed.
std::vector<uint8_t> FormatFrom(InputBytes input) {
    WAVEFORMATEX head = input.Take<WAVEFORMATEX>();
    const size_t size =
        head.wFormatTag == WAVE_FORMAT_PCM ? sizeof(PCMWAVEFORMAT) : sizeof head + head.cbSize;
    std::vector<uint8_t> bytes(size);
    std::memcpy(bytes.data(), &head, std::min(size, sizeof head));
    if (size > sizeof head) {
        const std::vector<uint8_t> extension = input.TakeBytes(head.cbSize);
        std::copy(extension.begin(), extension.end(), bytes.begin() + sizeof head);
    }
    return bytes;
}

// Rates below 32000 Hz are not compared with the incoming one.
bool IncomingRateFits(DWORD rate) {
    return rate < 32000 || rate == IncomingRate;
}

void TryOutput(UINT device, const WAVEFORMATEX* format) {
    const MMRESULT query = waveOutOpen(nullptr, device, format, 0, 0, WAVE_FORMAT_QUERY);
    HWAVEOUT wave = nullptr;
    const MMRESULT open = waveOutOpen(&wave, device, format, 0, 0, CALLBACK_NULL);
    Require(open == query, "an output answers query and open differently");
    if (open == MMSYSERR_NOERROR) {
        Require(waveOutClose(wave) == MMSYSERR_NOERROR, "an output does not close");
    }
}

void TryInput(UINT device, const WAVEFORMATEX* format) {
    const MMRESULT query = waveInOpen(nullptr, device, format, 0, 0, WAVE_FORMAT_QUERY);
    HWAVEIN wave = nullptr;
    const MMRESULT open = waveInOpen(&wave, device, format, 0, 0, CALLBACK_NULL);
    const bool fits = device != DigitalInput || IncomingRateFits(format->nSamplesPerSec);
    const MMRESULT expected = query == MMSYSERR_NOERROR && !fits ? MMSYSERR_ERROR : query;
    Require(open == expected, "an input answers query and open differently");
    if (open == MMSYSERR_NOERROR) {
        Require(waveInClose(wave) == MMSYSERR_NOERROR, "an input does not close");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::vector<uint8_t> bytes = FormatFrom(InputBytes(data, size));
    const auto* format = reinterpret_cast<const WAVEFORMATEX*>(bytes.data());
    FreshMachine machine;
    machine.Cards().SetDigitalInputRate(0, IncomingRate);
    for (UINT device = 0; device < Ports; ++device) {
        TryOutput(device, format);
        TryInput(device, format);
    }
    return 0;
}
