#include <cstring>
#include <type_traits>

#include "convert/capture.h"

namespace kestvox {

namespace {

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
int32_t Wrap(uint32_t value) {
    return static_cast<int32_t>(value);
}

uint32_t Bits(int32_t value) {
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
int32_t AddSaturating(int32_t sample, int32_t dither) {
    int32_t sum = 0;
    if (!__builtin_add_overflow(sample, dither, &sum)) {
        return sum;
    }
    return sample >= 0 ? 0x7FFFFF00 : Wrap(0x80000000);
}

template <typename Output, bool TwoDraws, bool Shaped>
void Dither(typename Output::Sample* destination, const int32_t* source, size_t count, unsigned channels,
            DitherState& state) {
    constexpr uint32_t Mask = ~0u << Output::Shift;
    uint32_t random = state.Random;
    int32_t error[2] = {state.ShapingError[0], state.ShapingError[1]};
    unsigned channel = 0;
    for (size_t i = 0; i < count; ++i) {
        uint32_t dither = Draw<Output>(random);
        if constexpr (TwoDraws) {
            dither += Draw<Output>(random);
        }
        const int32_t carried = error[channel];
        const int32_t sample = source[i];
        const int32_t value = AddSaturating(sample, Wrap(dither + Bits(carried)));
        if constexpr (Shaped) {
            error[channel] = Wrap(Bits(sample) + Bits(carried) - (Bits(value) & Mask)) >> 1;
            channel = channels == 2 ? channel ^ 1 : channel;
        }
        Store(destination + i, Output::Quantise(value));
    }
    state = {random, {error[0], error[1]}};
}

template <typename Output>
void Truncate(typename Output::Sample* destination, const int32_t* source, size_t count, unsigned,
              DitherState&) {
    for (size_t i = 0; i < count; ++i) {
        Store(destination + i, Output::Quantise(source[i]));
    }
}

template <typename Output>
void DitherAs(typename Output::Sample* destination, const int32_t* source, size_t count, uint32_t type,
              unsigned channels, DitherState& state) {
    using Routine = void (*)(typename Output::Sample*, const int32_t*, size_t, unsigned, DitherState&);
    static constexpr Routine Routines[] = {
        Truncate<Output>,
        Dither<Output, false, false>,
        Dither<Output, false, true>,
        Dither<Output, true, false>,
        Dither<Output, true, true>,
    };
    const Routine routine = type < std::extent_v<decltype(Routines)> ? Routines[type] : Routines[NoDither];
    routine(destination, source, count, channels, state);
}

}  // namespace

void DitherCapture8(uint8_t* destination, const int32_t* source, size_t count, uint32_t type,
                    unsigned channels, DitherState& state) {
    DitherAs<To8>(destination, source, count, type, channels, state);
}

void DitherCapture16(int16_t* destination, const int32_t* source, size_t count, uint32_t type,
                     unsigned channels, DitherState& state) {
    DitherAs<To16>(destination, source, count, type, channels, state);
}

}  // namespace kestvox
