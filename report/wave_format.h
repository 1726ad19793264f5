// Wave formats: the sample encodings that there are, and how a format is told to a person.
#pragma once

#include <windows.h>
#include <mmsystem.h>
#include <mmreg.h>

#include <span>
#include <string>

namespace kestvox {

// One way to lay out samples. ValidBits is 0 except for WAVE_FORMAT_EXTENSIBLE.
struct SampleEncoding {
    const char* Name;
    WORD Tag;
    WORD Bits;
    WORD BytesPerSample;
    WORD ValidBits;
};

std::span<const SampleEncoding> AllEncodings();

// A complete format of that encoding; for all but WAVE_FORMAT_EXTENSIBLE only the Format member counts.
WAVEFORMATEXTENSIBLE MakeFormat(const SampleEncoding& encoding, WORD channels, DWORD rate);

// What a card's connector carries: 32-bit PCM, stereo.
WAVEFORMATEXTENSIBLE ConnectorFormat(DWORD rate);

// What the samples are, by the format's tag or that of its extension.
bool IsWhole(const WAVEFORMATEX& format);
bool IsFloat(const WAVEFORMATEX& format);

// "24-bit PCM in 3 bytes, stereo, 44100 Hz". An extensible format has its cbSize bytes behind it.
std::string DescribeFormat(const WAVEFORMATEX& format);

}  // namespace kestvox
