#include "tests/support/wave_formats.h"

#include <cstring>

namespace {

// KSDATAFORMAT_SUBTYPE_PCM
constexpr GUID PcmSubFormat = {0x00000001, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

}  // namespace

WaveFormat PcmFormat(DWORD rate, WORD channels, WORD bits, WORD containerBytes) {
    WaveFormat format = TaggedFormat(WAVE_FORMAT_PCM, rate, channels, bits);
    if (containerBytes != 0) {
        WAVEFORMATEX& basic = format.Basic();
        basic.nBlockAlign = static_cast<WORD>(containerBytes * channels);
        basic.nAvgBytesPerSec = rate * basic.nBlockAlign;
    }
    return format;
}

WaveFormat TaggedFormat(WORD tag, DWORD rate, WORD channels, WORD bits) {
    WaveFormat format = {};
    WAVEFORMATEX& basic = format.Basic();
    basic.wFormatTag = tag;
    basic.nChannels = channels;
    basic.nSamplesPerSec = rate;
    basic.wBitsPerSample = bits;
    basic.nBlockAlign = static_cast<WORD>((bits + 7) / 8 * channels);
    basic.nAvgBytesPerSec = rate * basic.nBlockAlign;
    return format;
}

WaveFormat ExtensibleFormat(DWORD rate, WORD channels, WORD containerBits, WORD validBits) {
    WaveFormat format = TaggedFormat(WAVE_FORMAT_EXTENSIBLE, rate, channels, containerBits);
    format.Basic().cbSize = 22;
    format.Extensible.Samples.wValidBitsPerSample = validBits;
    format.Extensible.dwChannelMask = channels == 1 ? 4 : 3;
    memcpy(&format.Extensible.SubFormat, &PcmSubFormat, sizeof PcmSubFormat);
    return format;
}
