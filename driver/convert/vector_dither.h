// The shaped types of the vector dither (vector_shaping.cpp).
#pragma once

#include "convert/capture.h"

namespace kestvox {

// `type` is one of the two shaped ones, `count` a multiple of DitherGroup.
void ShapeWholeGroups(uint8_t* destination, const int32_t* source, size_t count, uint32_t type,
                      unsigned channels, DitherState& state);
void ShapeWholeGroups(int16_t* destination, const int32_t* source, size_t count, uint32_t type,
                      unsigned channels, DitherState& state);

}  // namespace kestvox
