// The mean spectrum of a sound that is given piece by piece.
#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "simulator/channels/frame.h"

namespace kestvox {

class Spectrum {
public:
    Spectrum();

    void Add(std::span<const simulator::Frame> frames);

    // One value for each of BandCount bands from 0 to half the sample rate, in decibels: a sine of full scale
    // on both sides has 0. Nothing when the sound was shorter than a block of BlockFrames.
    std::vector<double> Decibels() const;

    static constexpr size_t BlockFrames = 4096;
    static constexpr size_t BandCount = 512;

private:
    void AddBlock();
    void Transform();

    std::vector<double> window_;
    std::vector<std::complex<double>> turns_;  // the roots of unity that the transform needs
    std::vector<std::complex<double>> block_;  // left is real, right is imaginary
    size_t filled_ = 0;
    std::vector<double> power_;  // of each line, summed over the blocks
    uint64_t blocks_ = 0;
};

}  // namespace kestvox
