#include <algorithm>
#include <cstdio>

#include "tools/command_error.h"
#include "tools/commands.h"
#include "tools/wave_error.h"
#include "tools/wave_format.h"
#include "tools/wide_text.h"

namespace kestvox {
namespace {

constexpr DWORD AskedRates[] = {8000,  11025, 12000, 16000, 22050, 24000,  32000,
                                44100, 48000, 64000, 88200, 96000, 176400, 192000};
constexpr WORD AskedChannels[] = {1, 2, 4, 6, 8};

// Asks one device, output or input, whether it accepts a format; opens nothing.
using FormatQuery = MMRESULT (*)(UINT device, const WAVEFORMATEX& format);

MMRESULT QueryOutput(UINT device, const WAVEFORMATEX& format) {
    return waveOutOpen(nullptr, device, &format, 0, 0, WAVE_FORMAT_QUERY);
}

MMRESULT QueryInput(UINT device, const WAVEFORMATEX& format) {
    return waveInOpen(nullptr, device, &format, 0, 0, WAVE_FORMAT_QUERY);
}

// Encodings that are accepted at the same rates and channels share a line.
struct AcceptedFormats {
    std::string Encodings;
    std::string Limits;
};

std::string AcceptedLimits(FormatQuery query, UINT device, const SampleEncoding& encoding) {
    std::string channelText;
    std::string rateText;
    for (const WORD channels : AskedChannels) {
        std::string rates;
        for (const DWORD rate : AskedRates) {
            if (query(device, MakeFormat(encoding, channels, rate).Format) == MMSYSERR_NOERROR) {
                rates += (rates.empty() ? "" : ", ") + std::to_string(rate);
            }
        }
        if (!rates.empty()) {
            channelText += (channelText.empty() ? "" : " or ") + std::to_string(channels);
            rateText = rates;
        }
    }
    return rateText.empty() ? "" : channelText + " channels at " + rateText + " Hz";
}

void PrintFormats(FormatQuery query, UINT device) {
    std::vector<AcceptedFormats> accepted;
    for (const SampleEncoding& encoding : AllEncodings()) {
        const std::string limits = AcceptedLimits(query, device, encoding);
        if (limits.empty()) {
            continue;
        }
        const auto same = std::ranges::find(accepted, limits, &AcceptedFormats::Limits);
        if (same == accepted.end()) {
            accepted.push_back({encoding.Name, limits});
        } else {
            same->Encodings += std::string(", ") + encoding.Name;
        }
    }
    for (const AcceptedFormats& formats : accepted) {
        std::printf("    %s\n        %s\n", formats.Limits.c_str(), formats.Encodings.c_str());
    }
    if (accepted.empty()) {
        const MMRESULT answer = query(device, MakeFormat(AllEncodings()[1], 2, 44100).Format);
        std::printf("    no formats: %s\n", DescribeWaveError(answer).c_str());
    }
}

// `Caps` is WAVEOUTCAPSW or WAVEINCAPSW.
template <typename Caps>
void PrintDevices(const char* direction, UINT count, MMRESULT (*getCaps)(UINT_PTR, Caps*, UINT),
                  FormatQuery query) {
    for (UINT device = 0; device < count; ++device) {
        Caps caps{};
        const MMRESULT result = getCaps(device, &caps, sizeof caps);
        if (result != MMSYSERR_NOERROR) {
            std::printf("%s %u: %s\n", direction, device, DescribeWaveError(result).c_str());
            continue;
        }
        std::printf("%s %u: %s\n", direction, device, Narrow(caps.szPname).c_str());
        PrintFormats(query, device);
    }
}

}  // namespace

int ListDevices(const SceneOptions& options) {
    const Scene scene(options);
    if (waveOutGetNumDevs() == 0) {
        throw CommandError("there are no wave devices");
    }
    PrintDevices<WAVEOUTCAPSW>(
        "output", waveOutGetNumDevs(),
        [](UINT_PTR device, WAVEOUTCAPSW* caps, UINT size) { return waveOutGetDevCapsW(device, caps, size); },
        QueryOutput);
    PrintDevices<WAVEINCAPSW>(
        "input", waveInGetNumDevs(),
        [](UINT_PTR device, WAVEINCAPSW* caps, UINT size) { return waveInGetDevCapsW(device, caps, size); },
        QueryInput);
    return ExitSuccess;
}

}  // namespace kestvox
