// What dither is for: the error it leaves, measured in output steps.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

#include "convert/capture.h"

namespace {

using namespace kestvox;

constexpr size_t Block = 1024;
constexpr size_t Blocks = 32;
constexpr double Step = 65536;

std::vector<double> Errors(const std::vector<int32_t>& slots, uint32_t type) {
    std::vector<int16_t> samples(slots.size());
    DitherState state = {};
    DitherCapture16(samples.data(), slots.data(), slots.size(), type, 1, state);
    std::vector<double> errors(slots.size());
    for (size_t i = 0; i < slots.size(); ++i) {
        errors[i] = samples[i] - slots[i] / Step;
    }
    return errors;
}

double Mean(const std::vector<double>& values) {
    double sum = 0;
    for (const double value : values) {
        sum += value;
    }
    return sum / static_cast<double>(values.size());
}

double Variance(const std::vector<double>& values) {
    const double mean = Mean(values);
    double sum = 0;
    for (const double value : values) {
        sum += (value - mean) * (value - mean);
    }
    return sum / static_cast<double>(values.size());
}

void Transform(std::vector<std::complex<double>>& values) {
    const size_t count = values.size();
    if (count == 1) {
        return;
    }
    std::vector<std::complex<double>> even(count / 2);
    std::vector<std::complex<double>> odd(count / 2);
    for (size_t i = 0; i < count / 2; ++i) {
        even[i] = values[2 * i];
        odd[i] = values[2 * i + 1];
    }
    Transform(even);
    Transform(odd);
    for (size_t i = 0; i < count / 2; ++i) {
        const double angle = -2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(count);
        const std::complex<double> turned = std::polar(1.0, angle) * odd[i];
        values[i] = even[i] + turned;
        values[i + count / 2] = even[i] - turned;
    }
}

// Noise power of the highest eighth of the band over that of the lowest, in dB.
double Tilt(const std::vector<double>& errors) {
    const double mean = Mean(errors);
    double low = 0;
    double high = 0;
    for (size_t block = 0; block < Blocks; ++block) {
        std::vector<std::complex<double>> values(Block);
        for (size_t i = 0; i < Block; ++i) {
            values[i] = errors[block * Block + i] - mean;
        }
        Transform(values);
        constexpr size_t band = Block / 2 / 8;
        for (size_t i = 1; i < band; ++i) {
            low += std::norm(values[i]);
            high += std::norm(values[Block / 2 - i]);
        }
    }
    return 10 * std::log10(high / low);
}

// A tone of a few steps, off the grid of the transform.
std::vector<int32_t> QuietTone() {
    std::vector<int32_t> slots(Block * Blocks);
    for (size_t i = 0; i < slots.size(); ++i) {
        slots[i] = static_cast<int32_t>(std::lround(7.3 * Step * std::sin(0.0617 * static_cast<double>(i))));
    }
    return slots;
}

TEST(DitherNoise, HasItsFloorAndShape) {
    struct Case {
        uint32_t Type;
        double Variance;  // in steps: 1/12 of the quantiser, 1/12 of each draw; shaping adds its share
        double Tilt;      // dB: none, or that of 1 - z^-1 / 2, from 0.5 at the bottom to 1.5 at the top
    };
    const double shaped = 20 * std::log10(1.5 / 0.5);
    const Case cases[] = {
        {DitherRectangular, 2.0 / 12, 0},
        {DitherRectangularShaped, 2.0 / 12 * 1.25, shaped},
        {DitherTriangular, 3.0 / 12, 0},
        {DitherTriangularShaped, 3.0 / 12 * 1.25, shaped},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.Type);
        const std::vector<double> errors = Errors(QuietTone(), test.Type);
        EXPECT_NEAR(Variance(errors) / test.Variance, 1, 0.05);
        EXPECT_NEAR(Tilt(errors), test.Tilt, 1);
    }
    EXPECT_NEAR(Variance(Errors(QuietTone(), NoDither)) * 12, 1, 0.05);
}

// Two draws make the noise power independent of where the signal lies between two steps; one draw
// leaves none at a step's boundary.
TEST(DitherNoise, TwoDrawsDoNotModulate) {
    const auto powerAt = [](double position, uint32_t type) {
        const auto level = static_cast<int32_t>(std::lround((100 + position) * Step));
        return Variance(Errors(std::vector<int32_t>(20000, level), type));
    };
    for (const double position : {0.0, 0.125, 0.25, 0.5, 0.75, 0.875}) {
        EXPECT_NEAR(powerAt(position, DitherTriangular), 0.25, 0.01) << position;
    }
    EXPECT_NEAR(powerAt(0, DitherRectangular), 0.25, 0.01);
    EXPECT_EQ(powerAt(0.5, DitherRectangular), 0.0);
}

}  // namespace
