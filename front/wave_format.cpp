#include "front/wave_format.h"

#include <mmreg.h>

#include <cstring>

namespace front {

namespace {

// What a sub-format adds to the number of a plain format.
constexpr GUID PlainBase = {0, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

bool StandsForPlain(const WAVEFORMATEX& format, WORD* tag) {
    WAVEFORMATEXTENSIBLE extensible;
    if (format.wFormatTag != WAVE_FORMAT_EXTENSIBLE || sizeof format + format.cbSize < sizeof extensible) {
        return false;
    }
    std::memcpy(&extensible, &format, sizeof extensible);
    GUID base = extensible.SubFormat;
    base.Data1 = 0;
    *tag = static_cast<WORD>(extensible.SubFormat.Data1);
    return extensible.SubFormat.Data1 == *tag && std::memcmp(&base, &PlainBase, sizeof base) == 0 &&
           extensible.Samples.wValidBitsPerSample == format.wBitsPerSample;
}

}  // namespace

// A PCM format may end before its cbSize.
WaveFormat::WaveFormat(const WAVEFORMATEX& format) : bytes_(sizeof(WAVEFORMATEX)) {
    WORD plain = 0;
    if (format.wFormatTag == WAVE_FORMAT_PCM) {
        std::memcpy(bytes_.data(), &format, sizeof(PCMWAVEFORMAT));
    } else if (StandsForPlain(format, &plain)) {
        WAVEFORMATEX copy = format;
        copy.wFormatTag = plain;
        copy.cbSize = 0;
        std::memcpy(bytes_.data(), &copy, sizeof copy);
    } else {
        bytes_.resize(sizeof format + format.cbSize);
        std::memcpy(bytes_.data(), &format, bytes_.size());
    }
}

WaveFormat WaveFormat::Pcm(DWORD rate, WORD channels, WORD bits) {
    const WORD frame = static_cast<WORD>(channels * bits / 8);
    return WaveFormat(WAVEFORMATEX{WAVE_FORMAT_PCM, channels, rate, rate * frame, frame, bits, 0});
}

DWORD WaveFormat::BytesOf(DWORD samples) const {
    const WAVEFORMATEX& format = Get();
    if (IsPcm()) {
        return samples * format.nBlockAlign;
    }
    const uint64_t bytes = uint64_t{samples} * format.nAvgBytesPerSec / format.nSamplesPerSec;
    return static_cast<DWORD>(bytes - bytes % format.nBlockAlign);
}

}  // namespace front
