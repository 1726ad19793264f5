#include "format/conversion.h"

#include <cstring>

#include "convert/expand.h"

namespace kestvox {

namespace {

void Copy(void* destination, const void* source, DWORD bytes) {
    memcpy(destination, source, bytes);
}

template <const CompandingTable& Table>
void ExpandLaw(void* destination, const void* source, DWORD samples) {
    ExpandCompanded(static_cast<int16_t*>(destination), static_cast<const uint8_t*>(source), Table, samples);
}

void ExpandPacked(void* destination, const void* source, DWORD samples) {
    ExpandPacked24(static_cast<uint32_t*>(destination), static_cast<const uint8_t*>(source), samples);
}

}  // namespace

const OutputConversion OutputConversions[4] = {
    {1, 1, Copy},                   // NoConversion
    {1, 2, ExpandLaw<ALawTable>},   // FromALaw
    {1, 2, ExpandLaw<MuLawTable>},  // FromMuLaw
    {3, SlotSize, ExpandPacked},    // Packed24
};

void ConvertCapture(const StreamFormat& format, DWORD ditherType, void* destination, const void* slots,
                    DWORD samples, DitherState& state) {
    const auto* source = static_cast<const int32_t*>(slots);
    if (format.Conversion == Packed24) {
        PackCapture24(static_cast<uint8_t*>(destination), static_cast<const uint32_t*>(slots), samples);
    } else if (format.SampleFormat == Sample8) {
        DitherCapture8(static_cast<uint8_t*>(destination), source, samples, ditherType, format.Channels,
                       state);
    } else {
        DitherCapture16(static_cast<int16_t*>(destination), source, samples, ditherType, format.Channels,
                        state);
    }
}

}  // namespace kestvox
