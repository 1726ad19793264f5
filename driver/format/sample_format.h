// How samples lie in the card's memory and in the client's, and what stands between the two.
#pragma once

#include <windows.h>

namespace kestvox {

// How the card reads a stream's memory: port register 0, bits 6 and 7.
enum SampleFormatCode : WORD {
    Sample8 = 0,
    Sample16 = 1,
    SlotRight = 2,  // 32-bit slot, sample right-justified
    SlotLeft = 3,   // 32-bit slot, most significant bit at bit 31
};

// The card's 32-bit slot, in bytes.
inline constexpr DWORD SlotSize = 4;

enum ConversionCode : WORD {
    NoConversion = 0,
    FromALaw = 1,
    FromMuLaw = 2,
    Packed24 = 3,  // 3 bytes a sample to or from SlotLeft
    Dithered = 4,  // input: SlotLeft to 8 or 16 bits
};

// What an open negotiated. Rates in Hz; AvgBytesPerSec as the client gave it, unchecked.
struct StreamFormat {
    WORD FormatTag;
    WORD Channels;  // 1 or 2
    WORD RateCode;
    WORD SampleFormat;
    WORD Conversion;
    DWORD SampleRate;
    DWORD AvgBytesPerSec;
};

// Bytes of one sample of one channel in the client's layout.
constexpr DWORD ClientSampleSize(WORD sampleFormat, WORD conversion) {
    switch (sampleFormat) {
    case Sample8:
        return 1;
    case Sample16:
        return conversion == FromALaw || conversion == FromMuLaw ? 1 : 2;
    case SlotLeft:
        return conversion == Packed24 ? 3 : SlotSize;
    default:
        return SlotSize;
    }
}

}  // namespace kestvox
