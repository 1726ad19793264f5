#include "tools/streams/accepted_formats.h"

#include <algorithm>

#include "report/wave_format.h"

namespace kestvox {
namespace {

constexpr DWORD AskedRates[] = {8000,  11025, 12000, 16000, 22050, 24000,  32000,
                                44100, 48000, 64000, 88200, 96000, 176400, 192000};
constexpr SampleEncoding PlainEncoding{"16-bit PCM", WAVE_FORMAT_PCM, 16, 2, 0};
constexpr WORD AskedChannels[] = {1, 2, 4, 6, 8};

std::string AcceptedLimits(const FormatQuery& accepts, const SampleEncoding& encoding) {
    std::string channelText;
    std::string rateText;
    for (const WORD channels : AskedChannels) {
        std::string rates;
        for (const DWORD rate : AskedRates) {
            if (accepts(MakeFormat(encoding, channels, rate).Format)) {
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

std::string Joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : ", ") + word;
    }
    return text;
}

std::vector<std::string> EncodingsAt(const FormatQuery& accepts, WORD channels, DWORD rate) {
    std::vector<std::string> names;
    for (const SampleEncoding& encoding : AllEncodings()) {
        if (accepts(MakeFormat(encoding, channels, rate).Format)) {
            names.emplace_back(encoding.Name);
        }
    }
    return names;
}

}  // namespace

std::vector<AcceptedFormats> FindAcceptedFormats(const FormatQuery& accepts) {
    std::vector<AcceptedFormats> accepted;
    for (const SampleEncoding& encoding : AllEncodings()) {
        const std::string limits = AcceptedLimits(accepts, encoding);
        if (limits.empty()) {
            continue;
        }
        auto same = std::ranges::find(accepted, limits, &AcceptedFormats::Limits);
        if (same == accepted.end()) {
            same = accepted.insert(same, AcceptedFormats{.Limits = limits, .Encodings = {}});
        }
        same->Encodings.emplace_back(encoding.Name);
    }
    return accepted;
}

std::string SayWhatIsAccepted(const FormatQueries& queries, const WAVEFORMATEX& asked) {
    const auto& [accepts, opens] = queries;
    const WORD channels = asked.nChannels == 1 ? 1 : 2;
    if (accepts(asked)) {
        for (const DWORD rate : AskedRates) {
            if (opens(MakeFormat(PlainEncoding, channels, rate).Format)) {
                return "another stream holds its clock at " + std::to_string(rate) +
                       " Hz, and it takes no other rate";
            }
        }
        return "another stream holds its clock at another rate";
    }
    const std::vector<std::string> encodings = EncodingsAt(accepts, channels, asked.nSamplesPerSec);
    if (!encodings.empty()) {
        return "at " + std::to_string(asked.nSamplesPerSec) + " Hz it accepts " +
               (channels == 1 ? "mono" : "stereo") + " of " + Joined(encodings);
    }
    std::vector<std::string> rates;
    for (const DWORD rate : AskedRates) {
        if (!EncodingsAt(accepts, channels, rate).empty()) {
            rates.push_back(std::to_string(rate));
        }
    }
    return rates.empty() ? "it accepts nothing at this time" : "it accepts " + Joined(rates) + " Hz";
}

}  // namespace kestvox
