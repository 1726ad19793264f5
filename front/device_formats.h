// Which formats of a device a client's format may be converted to and from.
#pragma once

#include <memory>
#include <vector>

#include "front/conversion.h"
#include "front/wave_driver.h"
#include "front/wave_format.h"

namespace front {

// In the order in which they are tried: the client's own rate, then whole multiples of it, then higher and at
// last lower ones; at each rate the samples with the most bits that the client's format can make use of.
std::vector<WaveFormat> DeviceFormatsFor(const WaveFormat& client);

// From the client's format to the device's, or back when recording. What takes two steps goes over 16-bit PCM
// of the client's rate. Null when the system has no converter.
std::unique_ptr<Conversion> FindConversion(WaveDirection direction, const WaveFormat& client,
                                           const WaveFormat& device);

}  // namespace front
