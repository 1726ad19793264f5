#include "report/spectrum.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "report/samples.h"

namespace kestvox {
namespace {

constexpr size_t LineCount = Spectrum::BlockFrames / 2;
constexpr double Floor = 1e-20;  // of a power: -200 dB

// The library's own product also looks for infinities, which takes a third of the transform's time.
std::complex<double> Product(const std::complex<double>& one, const std::complex<double>& other) {
    return {one.real() * other.real() - one.imag() * other.imag(),
            one.real() * other.imag() + one.imag() * other.real()};
}

}  // namespace

Spectrum::Spectrum() : window_(BlockFrames), turns_(BlockFrames / 2), block_(BlockFrames), power_(LineCount) {
    constexpr double Turn = 2 * std::numbers::pi / BlockFrames;
    for (size_t i = 0; i < BlockFrames; ++i) {
        window_[i] = 0.5 - 0.5 * std::cos(Turn * static_cast<double>(i));
    }
    for (size_t i = 0; i < turns_.size(); ++i) {
        turns_[i] = std::polar(1.0, -Turn * static_cast<double>(i));
    }
}

void Spectrum::Add(std::span<const simulator::Frame> frames) {
    for (const simulator::Frame& frame : frames) {
        block_[filled_] = {frame.Left / FullScale * window_[filled_],
                           frame.Right / FullScale * window_[filled_]};
        if (++filled_ == BlockFrames) {
            AddBlock();
            filled_ = 0;
        }
    }
}

// In place: places with their bits reversed first, then pairs of ever greater distance.
void Spectrum::Transform() {
    for (size_t i = 1, j = 0; i < BlockFrames; ++i) {
        size_t bit = BlockFrames / 2;
        for (; (j & bit) != 0; bit /= 2) {
            j ^= bit;
        }
        j ^= bit;
        if (i < j) {
            std::swap(block_[i], block_[j]);
        }
    }
    for (size_t distance = 1; distance < BlockFrames; distance *= 2) {
        const size_t step = BlockFrames / (2 * distance);
        for (size_t start = 0; start < BlockFrames; start += 2 * distance) {
            for (size_t i = 0; i < distance; ++i) {
                std::complex<double>& low = block_[start + i];
                std::complex<double>& high = block_[start + i + distance];
                const std::complex<double> turned = Product(high, turns_[i * step]);
                high = low - turned;
                low += turned;
            }
        }
    }
}

// A line and its mirror image hold both sides; the sum of their powers is that of left and right.
void Spectrum::AddBlock() {
    Transform();
    for (size_t line = 1; line < LineCount; ++line) {
        power_[line] += (std::norm(block_[line]) + std::norm(block_[BlockFrames - line])) / 2;
    }
    ++blocks_;
}

// The window halves a sine, and the other half of its power is in the mirror image. The strongest line stands
// for its band.
std::vector<double> Spectrum::Decibels() const {
    std::vector<double> bands;
    if (blocks_ == 0) {
        return bands;
    }
    constexpr double OfFullSine = BlockFrames / 4.0 * (BlockFrames / 4.0) * 2;
    constexpr size_t LinesOfBand = LineCount / BandCount;
    for (size_t band = 0; band < BandCount; ++band) {
        const auto first = power_.begin() + static_cast<std::ptrdiff_t>(band * LinesOfBand);
        const double most = *std::max_element(first, first + LinesOfBand);
        bands.push_back(10 * std::log10(std::max(Floor, most / static_cast<double>(blocks_) / OfFullSine)));
    }
    return bands;
}

}  // namespace kestvox
