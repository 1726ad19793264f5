// Shaping goes sample by sample: the error that one leaves is needed for the next of its channel. But little
// of it is. With a slot parted at the output step into `high` steps and `low`, and while no sum leaves the
// range,
//
//     push[i] = 2 x (low[i] + dither[i]) - dither[i - 1]
//     sum[i] = push[i] + rest[i - 1]
//     output[i] = high[i] + sum[i] / 2 steps               rounded down, as all divisions here
//     rest[i] = sum[i] / 2 below a step                    error[i + 1] = (rest[i] - dither[i]) / 2
//
// so only the sums below two steps must be made one after the other. They are made at the top of a 32-bit
// word, where what is above two steps falls off by itself; what halving leaves below the ones does not
// matter, for nothing is carried up from there. That is a shift and an addition for each sample; all else is
// done for many samples at once, before and after.
#include "convert/routines.h"
#include "convert/vector_dither.h"
#include "convert/vector_draws.h"

#ifdef KESTVOX_VECTOR_UNIT

namespace kestvox {

namespace {

constexpr size_t BlockSize = 64;  // samples that are shaped at once, a multiple of the group

template <typename Output>
constexpr int32_t Step = 1 << Output::Shift;

template <typename Output>
constexpr int SumShift = 31 - Output::Shift;  // from a sum to the top of a word

struct Block {
    int32_t Push[BlockSize];
    uint32_t PushAtTop[BlockSize];
    uint32_t SumAtTop[2 + BlockSize];  // begins with those of the channels' last samples
};

// The dither of each sample's predecessor in its channel: one place on for one channel, two for two.
template <unsigned Channels>
VECTOR_INLINE __m128i Before(__m128i dither, __m128i previous) {
    return _mm_alignr_epi8(dither, previous, 16 - 4 * Channels);
}

template <typename Output>
VECTOR_INLINE void StorePush(Block& block, size_t at, __m128i slots, __m128i dither, __m128i before) {
    const __m128i low = _mm_and_si128(slots, _mm_set1_epi32(Step<Output> - 1));
    const __m128i dithered = _mm_add_epi32(low, dither);
    const __m128i push = _mm_sub_epi32(_mm_add_epi32(dithered, dithered), before);
    Store(block.Push + at, push);
    Store(block.PushAtTop + at, _mm_slli_epi32(push, SumShift<Output>));
}

// `previous` ends with the dither of the channels' last samples.
template <typename Output, unsigned Channels, typename Dither>
VECTOR_INLINE void Push(Block& block, const int32_t* source, size_t count, Dither& next, __m128i& previous) {
    for (size_t i = 0; i < count; i += DitherGroup) {
        __m128i first;
        __m128i second;
        next.Next(first, second);
        StorePush<Output>(block, i, Load(source + i), first, Before<Channels>(first, previous));
        StorePush<Output>(block, i + 4, Load(source + i + 4), second, Before<Channels>(second, first));
        previous = second;
    }
}

template <unsigned Channels>
void Sum(Block& block, size_t count);

template <>
VECTOR_INLINE void Sum<1>(Block& block, size_t count) {
    uint32_t sum = 0;
    for (size_t i = 0; i < count; ++i) {
        sum = (sum >> 1) + block.PushAtTop[i];
        block.SumAtTop[1 + i] = sum;
    }
}

// Both channels at once, in the lower half of a vector.
template <>
VECTOR_INLINE void Sum<2>(Block& block, size_t count) {
    __m128i sums = _mm_setzero_si128();
    for (size_t i = 0; i < count; i += 2) {
        sums = _mm_add_epi32(_mm_srli_epi32(sums, 1), LoadHalf(block.PushAtTop + i));
        StoreHalf(block.SumAtTop + 2 + i, sums);
    }
}

template <typename Output>
VECTOR_INLINE __m128i Value(const Block& block, __m128i slots, size_t at) {
    const __m128i rest = _mm_srli_epi32(Load(block.SumAtTop + at), 32 - Output::Shift);
    const __m128i sum = _mm_add_epi32(rest, Load(block.Push + at));
    return _mm_add_epi32(_mm_srai_epi32(slots, Output::Shift), _mm_srai_epi32(sum, Output::Shift + 1));
}

// False when a value came near the ends of the range.
template <typename Output>
VECTOR_INLINE bool Finish(typename Output::Sample* destination, const Block& block, const int32_t* source,
                          size_t count) {
    __m128i highest = _mm_setzero_si128();
    __m128i lowest = _mm_setzero_si128();
    for (size_t i = 0; i < count; i += DitherGroup) {
        const __m128i words = _mm_packs_epi32(Value<Output>(block, Load(source + i), i),
                                              Value<Output>(block, Load(source + i + 4), i + 4));
        highest = _mm_max_epi16(highest, words);
        lowest = _mm_min_epi16(lowest, words);
        StoreGroup(destination + i, words);
    }
    constexpr int16_t End = static_cast<int16_t>((1 << SumShift<Output>)-1);
    const __m128i atEnd =
        _mm_or_si128(_mm_cmpgt_epi16(highest, _mm_set1_epi16(static_cast<int16_t>(End - 1))),
                     _mm_cmpgt_epi16(_mm_set1_epi16(static_cast<int16_t>(-End)), lowest));
    return _mm_movemask_epi8(atEnd) == 0;
}

template <typename Output>
bool ErrorsAreUsual(const DitherState& state) {
    const auto usual = [](int32_t error) { return error >= -Step<Output> && error <= Step<Output>; };
    return usual(state.ShapingError[0]) && usual(state.ShapingError[1]);
}

void ShapePlainly(uint8_t* destination, const int32_t* source, size_t count, uint32_t type, unsigned channels,
                  DitherState& state) {
    portable::DitherCapture8(destination, source, count, type, channels, state);
}

void ShapePlainly(int16_t* destination, const int32_t* source, size_t count, uint32_t type, unsigned channels,
                  DitherState& state) {
    portable::DitherCapture16(destination, source, count, type, channels, state);
}

// Shapes blocks until one comes near the ends of the range; how many samples it has done.
template <typename Output, bool TwoDraws, unsigned Channels>
VECTOR_ROUTINE size_t ShapeBlocks(typename Output::Sample* destination, const int32_t* source, size_t count,
                                  DitherState& state) {
    GroupDither<Output, TwoDraws> next(state.Random);
    int32_t* error = state.ShapingError;
    Block block = {};
    size_t done = 0;
    while (done != count && ErrorsAreUsual<Output>(state)) {
        const size_t size = count - done < BlockSize ? count - done : BlockSize;
        // An error stands for a rest of nothing after a dither of twice its negative.
        block.SumAtTop[0] = block.SumAtTop[1] = 0;
        __m128i previous = _mm_setr_epi32(0, 0, -2 * error[0], -2 * error[Channels - 1]);
        Push<Output, Channels>(block, source + done, size, next, previous);
        Sum<Channels>(block, size);
        if (!Finish<Output>(destination + done, block, source + done, size)) {
            break;
        }
        int32_t last[4];
        Store(last, previous);
        for (unsigned channel = 0; channel < Channels; ++channel) {
            const uint32_t rest = block.SumAtTop[size + channel] >> (32 - Output::Shift);
            error[channel] = (Wrap(rest) - last[4 - Channels + channel]) >> 1;
        }
        state.Random = next.Random();
        done += size;
    }
    return done;
}

template <typename Output>
void Shape(typename Output::Sample* destination, const int32_t* source, size_t count, uint32_t type,
           unsigned channels, DitherState& state) {
    using Routine = size_t (*)(typename Output::Sample*, const int32_t*, size_t, DitherState&);
    static constexpr Routine Routines[2][2] = {
        {ShapeBlocks<Output, false, 1>, ShapeBlocks<Output, false, 2>},
        {ShapeBlocks<Output, true, 1>, ShapeBlocks<Output, true, 2>},
    };
    const Routine shapeBlocks = Routines[type == DitherTriangularShaped][channels == 2];
    while (count != 0) {
        size_t done = shapeBlocks(destination, source, count, state);
        if (done != count) {
            const size_t left = count - done;
            const size_t size = left < BlockSize ? left : BlockSize;
            ShapePlainly(destination + done, source + done, size, type, channels, state);
            done += size;
        }
        destination += done;
        source += done;
        count -= done;
    }
}

}  // namespace

void ShapeWholeGroups(uint8_t* destination, const int32_t* source, size_t count, uint32_t type,
                      unsigned channels, DitherState& state) {
    Shape<To8>(destination, source, count, type, channels, state);
}

void ShapeWholeGroups(int16_t* destination, const int32_t* source, size_t count, uint32_t type,
                      unsigned channels, DitherState& state) {
    Shape<To16>(destination, source, count, type, channels, state);
}

}  // namespace kestvox

#endif
