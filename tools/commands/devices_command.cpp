#include <algorithm>
#include <cstdio>
#include <iterator>

#include "tools/command_error.h"
#include "tools/commands/commands.h"
#include "tools/streams/accepted_formats.h"
#include "tools/streams/wave_error.h"
#include "tools/system/wide_text.h"

namespace kestvox {
namespace {

constexpr size_t PageWidth = 100;

// What the capabilities say of a format: one bit for each of twelve.
bool InCapabilities(DWORD formats, const WAVEFORMATEX& format) {
    static constexpr DWORD Rates[] = {11025, 22050, 44100};
    const auto* rate = std::ranges::find(Rates, format.nSamplesPerSec);
    const bool standard = format.wFormatTag == WAVE_FORMAT_PCM && format.nChannels <= 2 &&
                          (format.wBitsPerSample == 8 || format.wBitsPerSample == 16);
    if (!standard || rate == std::end(Rates)) {
        return false;
    }
    const auto bit = (rate - Rates) * 4 + (format.wBitsPerSample == 16 ? 2 : 0) + (format.nChannels - 1);
    return (formats >> bit & 1) != 0;
}

void PrintFormats(const std::vector<AcceptedFormats>& accepted) {
    const std::string indent(8, ' ');
    for (const AcceptedFormats& formats : accepted) {
        std::printf("    %s\n", formats.Limits.c_str());
        std::string line = indent;
        for (const std::string& encoding : formats.Encodings) {
            const bool last = &encoding == &formats.Encodings.back();
            if (line.size() + encoding.size() + 2 > PageWidth) {
                std::printf("%s\n", line.c_str());
                line = indent;
            }
            line += (line == indent ? "" : " ") + encoding + (last ? "" : ",");
        }
        std::printf("%s\n", line.c_str());
    }
}

// `Caps` is WAVEOUTCAPSW or WAVEINCAPSW, `open` the call that asks for a format without opening.
template <typename Caps, typename Open>
void PrintDevice(const char* direction, UINT device, MMRESULT result, const Caps& caps, Open open) {
    if (result != MMSYSERR_NOERROR) {
        std::printf("%s %u: %s\n", direction, device, DescribeWaveError(result).c_str());
        return;
    }
    std::printf("%s %u: %s\n", direction, device, Narrow(caps.szPname).c_str());
    std::vector<AcceptedFormats> accepted = FindAcceptedFormats([=](const WAVEFORMATEX& format) {
        return open(nullptr, device, &format, 0, 0, WAVE_FORMAT_QUERY) == MMSYSERR_NOERROR;
    });
    if (accepted.empty()) {
        std::printf("    cannot be opened now; its capabilities say:\n");
        accepted = FindAcceptedFormats(
            [&](const WAVEFORMATEX& format) { return InCapabilities(caps.dwFormats, format); });
    }
    PrintFormats(accepted);
}

}  // namespace

int ListDevices(const SceneOptions& options) {
    const Scene scene(options);
    const UINT outputs = waveOutGetNumDevs();
    const UINT inputs = waveInGetNumDevs();
    if (outputs + inputs == 0) {
        throw CommandError("there are no wave devices");
    }
    for (UINT device = 0; device < outputs; ++device) {
        WAVEOUTCAPSW caps{};
        const MMRESULT result = waveOutGetDevCapsW(device, &caps, sizeof caps);
        PrintDevice("output", device, result, caps, waveOutOpen);
    }
    for (UINT device = 0; device < inputs; ++device) {
        WAVEINCAPSW caps{};
        const MMRESULT result = waveInGetDevCapsW(device, &caps, sizeof caps);
        PrintDevice("input", device, result, caps, waveInOpen);
    }
    return ExitSuccess;
}

}  // namespace kestvox
