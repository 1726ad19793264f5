// Between the client's samples and the card's, by conversion code.
#pragma once

#include "convert/capture.h"
#include "format/sample_format.h"

namespace kestvox {

struct OutputConversion {
    DWORD ClientSize;  // bytes a sample
    DWORD CardSize;
    void (*Convert)(void* destination, const void* source, DWORD samples);
};

// By ConversionCode, those of playback. Without a conversion the unit is the byte.
extern const OutputConversion OutputConversions[4];

// Brings recorded slots into the client's memory: packed, or dithered to the width that `format` has.
void ConvertCapture(const StreamFormat& format, DWORD ditherType, void* destination, const void* slots,
                    DWORD samples, DitherState& state);

}  // namespace kestvox
