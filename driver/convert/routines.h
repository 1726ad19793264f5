// The two sets of conversion routines behind expand.h and capture.h, with the same contracts. Which one the
// library uses is chosen when it is loaded (routines.cpp).
#pragma once

#include "convert/capture.h"
#include "convert/expand.h"

namespace kestvox {

// Plain C++ for any processor.
namespace portable {

void ExpandCompanded(int16_t* destination, const uint8_t* source, const CompandingTable& table, size_t count);
void ExpandPacked24(uint32_t* destination, const uint8_t* source, size_t count);
void PackCapture24(uint8_t* destination, const uint32_t* source, size_t count);
void DitherCapture8(uint8_t* destination, const int32_t* source, size_t count, uint32_t type,
                    unsigned channels, DitherState& state);
void DitherCapture16(int16_t* destination, const int32_t* source, size_t count, uint32_t type,
                     unsigned channels, DitherState& state);

}  // namespace portable

#if defined(__i386__) || defined(__x86_64__)
#define KESTVOX_VECTOR_UNIT

// 16 bytes at a time. Only where IsSupported: elsewhere the instructions do not exist.
namespace vector {

// The processor has SSSE3, and the system keeps its registers for each thread.
bool IsSupported();

void ExpandCompanded(int16_t* destination, const uint8_t* source, const CompandingTable& table, size_t count);
void ExpandPacked24(uint32_t* destination, const uint8_t* source, size_t count);
void PackCapture24(uint8_t* destination, const uint32_t* source, size_t count);
void DitherCapture8(uint8_t* destination, const int32_t* source, size_t count, uint32_t type,
                    unsigned channels, DitherState& state);
void DitherCapture16(int16_t* destination, const int32_t* source, size_t count, uint32_t type,
                     unsigned channels, DitherState& state);

}  // namespace vector

#else

namespace vector {

using namespace portable;
inline bool IsSupported() {
    return false;
}

}  // namespace vector

#endif

}  // namespace kestvox
