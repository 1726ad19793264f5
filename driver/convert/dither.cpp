#include <type_traits>

#include "convert/dither_steps.h"
#include "convert/routines.h"

namespace kestvox {

namespace {

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

void portable::DitherCapture8(uint8_t* destination, const int32_t* source, size_t count, uint32_t type,
                              unsigned channels, DitherState& state) {
    DitherAs<To8>(destination, source, count, type, channels, state);
}

void portable::DitherCapture16(int16_t* destination, const int32_t* source, size_t count, uint32_t type,
                               unsigned channels, DitherState& state) {
    DitherAs<To16>(destination, source, count, type, channels, state);
}

}  // namespace kestvox
