// The steps of the dither, one sample at a time.
#pragma once

#include <cstdint>
#include <cstring>

namespace kestvox {

// The linear congruential generator: next = state x Multiplier + Increment.
constexpr uint32_t Multiplier = 2147001325;
constexpr uint32_t Increment = 715136305;

// What the output width fixes: a step of the output is 1 << Shift in the slot.
struct To8 {
    using Sample = uint8_t;
    static constexpr int Shift = 24;
    static Sample Quantise(int32_t value) {
        return static_cast<Sample>((static_cast<uint32_t>(value) >> 24) ^ 0x80);
    }
};

struct To16 {
    using Sample = int16_t;
    static constexpr int Shift = 16;
    static Sample Quantise(int32_t value) { return static_cast<Sample>(value >> 16); }
};

// All sums wrap at 32 bits.
constexpr int32_t Wrap(uint32_t value) {
    return static_cast<int32_t>(value);
}

constexpr uint32_t Bits(int32_t value) {
    return static_cast<uint32_t>(value);
}

template <typename Output>
uint32_t Draw(uint32_t& random) {
    random = random * Multiplier + Increment;
    return Bits(Wrap(random) >> (32 - Output::Shift));
}

// The client's memory may begin anywhere.
template <typename Sample>
void Store(Sample* place, Sample value) {
    memcpy(place, &value, sizeof value);
}

// The sum or, when it leaves the range, the end of the range that `sample` lies at.
inline int32_t AddSaturating(int32_t sample, int32_t dither) {
    int32_t sum = 0;
    if (!__builtin_add_overflow(sample, dither, &sum)) {
        return sum;
    }
    return sample >= 0 ? 0x7FFFFF00 : Wrap(0x80000000);
}

}  // namespace kestvox
