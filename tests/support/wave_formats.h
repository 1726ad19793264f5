// Wave formats by what they hold.
#pragma once

#include <windows.h>
#include <mmsystem.h>
#include <mmreg.h>

struct WaveFormat {
    WAVEFORMATEXTENSIBLE Extensible;

    operator const WAVEFORMATEX&() const { return Extensible.Format; }
    const WAVEFORMATEX* Get() const { return &Extensible.Format; }
    WAVEFORMATEX& Basic() { return Extensible.Format; }
};

// `containerBytes` 0: the fewest that hold `bits`.
WaveFormat PcmFormat(DWORD rate, WORD channels, WORD bits, WORD containerBytes = 0);
// WAVE_FORMAT_ALAW, WAVE_FORMAT_MULAW or any other tag with the layout of PCM.
WaveFormat TaggedFormat(WORD tag, DWORD rate, WORD channels, WORD bits);
// WAVE_FORMAT_EXTENSIBLE with the PCM subformat.
WaveFormat ExtensibleFormat(DWORD rate, WORD channels, WORD containerBits, WORD validBits);
