// Wave formats by what they hold.
#pragma once

#include <windows.h>
#include <mmsystem.h>
#include <mmreg.h>

#include "report/wave_format.h"

struct WaveFormat {
    WAVEFORMATEXTENSIBLE Extensible;

    operator const WAVEFORMATEX&() const { return Extensible.Format; }
    const WAVEFORMATEX* Get() const { return &Extensible.Format; }
    WAVEFORMATEX& Basic() { return Extensible.Format; }
};

// WAVE_FORMAT_ALAW, WAVE_FORMAT_MULAW or any other tag with the layout of PCM. `containerBytes` 0: the fewest
// that hold `bits`. `validBits` is for WAVE_FORMAT_EXTENSIBLE.
inline WaveFormat TaggedFormat(WORD tag, DWORD rate, WORD channels, WORD bits, WORD containerBytes = 0,
                               WORD validBits = 0) {
    const auto bytes = static_cast<WORD>(containerBytes != 0 ? containerBytes : (bits + 7) / 8);
    return {kestvox::MakeFormat({"", tag, bits, bytes, validBits}, channels, rate)};
}
inline WaveFormat PcmFormat(DWORD rate, WORD channels, WORD bits, WORD containerBytes = 0) {
    return TaggedFormat(WAVE_FORMAT_PCM, rate, channels, bits, containerBytes);
}
// WAVE_FORMAT_EXTENSIBLE with the PCM subformat.
inline WaveFormat ExtensibleFormat(DWORD rate, WORD channels, WORD containerBits, WORD validBits) {
    return TaggedFormat(WAVE_FORMAT_EXTENSIBLE, rate, channels, containerBits, 0, validBits);
}
