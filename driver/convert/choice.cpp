// What the library converts with.
#include "convert/routines.h"

namespace kestvox {

namespace {

// Set when the library is loaded, before any thread can convert.
const bool UseVectors = vector::IsSupported();

}  // namespace

void ExpandCompanded(int16_t* destination, const uint8_t* source, const CompandingTable& table,
                     size_t count) {
    (UseVectors ? vector::ExpandCompanded : portable::ExpandCompanded)(destination, source, table, count);
}

void ExpandPacked24(uint32_t* destination, const uint8_t* source, size_t count) {
    (UseVectors ? vector::ExpandPacked24 : portable::ExpandPacked24)(destination, source, count);
}

void PackCapture24(uint8_t* destination, const uint32_t* source, size_t count) {
    (UseVectors ? vector::PackCapture24 : portable::PackCapture24)(destination, source, count);
}

void DitherCapture8(uint8_t* destination, const int32_t* source, size_t count, uint32_t type,
                    unsigned channels, DitherState& state) {
    (UseVectors ? vector::DitherCapture8 : portable::DitherCapture8)(destination, source, count, type,
                                                                     channels, state);
}

void DitherCapture16(int16_t* destination, const int32_t* source, size_t count, uint32_t type,
                     unsigned channels, DitherState& state) {
    (UseVectors ? vector::DitherCapture16 : portable::DitherCapture16)(destination, source, count, type,
                                                                       channels, state);
}

}  // namespace kestvox
