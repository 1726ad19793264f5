#include "report/wave_format.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace kestvox {
namespace {

constexpr SampleEncoding Encodings[] = {
    {"8-bit PCM", WAVE_FORMAT_PCM, 8, 1, 0},
    {"16-bit PCM", WAVE_FORMAT_PCM, 16, 2, 0},
    {"20-bit PCM in 3 bytes", WAVE_FORMAT_PCM, 20, 3, 0},
    {"20-bit PCM in 4 bytes", WAVE_FORMAT_PCM, 20, 4, 0},
    {"24-bit PCM in 3 bytes", WAVE_FORMAT_PCM, 24, 3, 0},
    {"24-bit PCM in 4 bytes", WAVE_FORMAT_PCM, 24, 4, 0},
    {"32-bit PCM", WAVE_FORMAT_PCM, 32, 4, 0},
    {"A-law", WAVE_FORMAT_ALAW, 8, 1, 0},
    {"mu-law", WAVE_FORMAT_MULAW, 8, 1, 0},
    {"extensible 8-bit PCM", WAVE_FORMAT_EXTENSIBLE, 8, 1, 8},
    {"extensible 16-bit PCM", WAVE_FORMAT_EXTENSIBLE, 16, 2, 16},
    {"extensible 24-bit PCM in 3 bytes", WAVE_FORMAT_EXTENSIBLE, 24, 3, 24},
    {"extensible 20-bit PCM in 4 bytes", WAVE_FORMAT_EXTENSIBLE, 32, 4, 20},
    {"extensible 24-bit PCM in 4 bytes", WAVE_FORMAT_EXTENSIBLE, 32, 4, 24},
    {"extensible 32-bit PCM", WAVE_FORMAT_EXTENSIBLE, 32, 4, 32},
    {"AC-3 over S/PDIF", WAVE_FORMAT_DOLBY_AC3_SPDIF, 16, 2, 0},
};

constexpr WORD FloatTag = 3;
constexpr GUID PcmSubFormat = {0x00000001, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
constexpr WORD ExtensionSize = sizeof(WAVEFORMATEXTENSIBLE) - sizeof(WAVEFORMATEX);

// What no device takes, but files hold.
constexpr struct {
    WORD Tag;
    const char* Name;
} OtherTags[] = {
    {0x0002, "ADPCM"}, {0x0011, "IMA ADPCM"}, {0x0031, "GSM"},  {0x0050, "MPEG audio"},
    {0x0055, "MP3"},   {0x00FF, "AAC"},       {0x2000, "AC-3"}, {0xF1AC, "FLAC"},
};

// The tag that an extensible format has in its extension.
WORD InnerTag(const WAVEFORMATEX& format) {
    WAVEFORMATEXTENSIBLE extensible;
    if (format.wFormatTag != WAVE_FORMAT_EXTENSIBLE || format.cbSize < ExtensionSize) {
        return format.wFormatTag;
    }
    std::memcpy(&extensible, &format, sizeof extensible);
    return static_cast<WORD>(extensible.SubFormat.Data1);
}

WORD ValidBits(const WAVEFORMATEX& format) {
    WAVEFORMATEXTENSIBLE extensible;
    if (format.wFormatTag != WAVE_FORMAT_EXTENSIBLE || format.cbSize < ExtensionSize) {
        return 0;
    }
    std::memcpy(&extensible, &format, sizeof extensible);
    return extensible.Samples.wValidBitsPerSample;
}

std::string DescribeEncoding(const WAVEFORMATEX& format) {
    const WORD bytesPerSample =
        format.nChannels ? static_cast<WORD>(format.nBlockAlign / format.nChannels) : format.nBlockAlign;
    const auto* known = std::ranges::find_if(Encodings, [&](const SampleEncoding& encoding) {
        return encoding.Tag == format.wFormatTag && encoding.Bits == format.wBitsPerSample &&
               encoding.BytesPerSample == bytesPerSample && encoding.ValidBits == ValidBits(format);
    });
    if (known != std::end(Encodings)) {
        return known->Name;
    }
    if (IsFloat(format)) {
        return std::to_string(format.wBitsPerSample) + "-bit floating point";
    }
    const auto* other =
        std::ranges::find(OtherTags, InnerTag(format), &std::decay_t<decltype(*OtherTags)>::Tag);
    if (other != std::end(OtherTags)) {
        return other->Name;
    }
    char text[80];
    std::snprintf(text, sizeof text, "format tag 0x%04X with %u bits in frames of %u bytes",
                  format.wFormatTag, format.wBitsPerSample, format.nBlockAlign);
    return text;
}

}  // namespace

bool IsWhole(const WAVEFORMATEX& format) {
    return InnerTag(format) == WAVE_FORMAT_PCM;
}

bool IsFloat(const WAVEFORMATEX& format) {
    return InnerTag(format) == FloatTag;
}

std::span<const SampleEncoding> AllEncodings() {
    return Encodings;
}

WAVEFORMATEXTENSIBLE MakeFormat(const SampleEncoding& encoding, WORD channels, DWORD rate) {
    WAVEFORMATEXTENSIBLE format{};
    format.Format.wFormatTag = encoding.Tag;
    format.Format.nChannels = channels;
    format.Format.nSamplesPerSec = rate;
    format.Format.nBlockAlign = static_cast<WORD>(encoding.BytesPerSample * channels);
    format.Format.nAvgBytesPerSec = rate * format.Format.nBlockAlign;
    format.Format.wBitsPerSample = encoding.Bits;
    if (encoding.Tag == WAVE_FORMAT_EXTENSIBLE) {
        format.Format.cbSize = ExtensionSize;
        format.Samples.wValidBitsPerSample = encoding.ValidBits;
        format.dwChannelMask = channels == 1 ? 4 : 3;  // front centre, or front left and right
        format.SubFormat = PcmSubFormat;
    }
    return format;
}

WAVEFORMATEXTENSIBLE ConnectorFormat(DWORD rate) {
    return MakeFormat({"32-bit PCM", WAVE_FORMAT_PCM, 32, 4, 0}, 2, rate);
}

std::string DescribeFormat(const WAVEFORMATEX& format) {
    const std::string channels = format.nChannels == 1   ? "mono"
                                 : format.nChannels == 2 ? "stereo"
                                                         : std::to_string(format.nChannels) + " channels";
    return DescribeEncoding(format) + ", " + channels + ", " + std::to_string(format.nSamplesPerSec) + " Hz";
}

}  // namespace kestvox
