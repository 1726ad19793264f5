// What the sample conversions cost beside copying the bytes that they write, and beside a plain loop over
// the samples that is compiled the same way.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "convert/routines.h"

namespace {

using namespace kestvox;

constexpr size_t Samples = 16384;

// Runs `convert` over buffers of so many bytes for each sample. The source is noise at a fraction of full
// scale.
template <typename Convert>
void Measure(benchmark::State& state, size_t sourceSize, size_t destinationSize, Convert convert) {
    std::vector<uint8_t> source(Samples * sourceSize);
    uint32_t noise = 1;
    for (size_t i = 0; i < source.size(); ++i) {
        noise = noise * 1664525 + 1013904223;
        source[i] = static_cast<uint8_t>(i % 4 == 3 ? (noise >> 24) / 8 : noise >> 24);
    }
    // Not at the source's place in its page: some processors are slow to copy between such.
    constexpr size_t Shift = 2048;
    std::vector<uint8_t> memory(Samples * destinationSize + Shift);
    uint8_t* destination = memory.data() + Shift;
    for (auto _ : state) {
        convert(destination, source.data());
        benchmark::DoNotOptimize(destination);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(Samples));
}

// The baselines: the bytes that a conversion to slots, to 3-byte, 16-bit and 8-bit samples writes.
void Copy(benchmark::State& state) {
    const auto size = static_cast<size_t>(state.range(0));
    Measure(state, size, size,
            [size](uint8_t* to, const uint8_t* from) { memcpy(to, from, Samples * size); });
}
BENCHMARK(Copy)->Arg(4)->Arg(3)->Arg(2)->Arg(1);

// --- the plain loops -------------------------------------------------------------------------------

void LoopExpand24(uint32_t* destination, const uint8_t* source, size_t count) {
    for (size_t i = 0; i < count; ++i, source += 3) {
        destination[i] = static_cast<uint32_t>(source[0]) << 8 | static_cast<uint32_t>(source[1]) << 16 |
                         static_cast<uint32_t>(source[2]) << 24;
    }
}

void LoopPack24(uint8_t* destination, const uint32_t* source, size_t count) {
    for (size_t i = 0; i < count; ++i, destination += 3) {
        destination[0] = static_cast<uint8_t>(source[i] >> 8);
        destination[1] = static_cast<uint8_t>(source[i] >> 16);
        destination[2] = static_cast<uint8_t>(source[i] >> 24);
    }
}

// --- the conversions -------------------------------------------------------------------------------

void Expand24(benchmark::State& state, decltype(&LoopExpand24) expand) {
    Measure(state, 3, 4, [expand](uint8_t* to, const uint8_t* from) {
        expand(reinterpret_cast<uint32_t*>(to), from, Samples);
    });
}
BENCHMARK_CAPTURE(Expand24, loop, LoopExpand24);
BENCHMARK_CAPTURE(Expand24, portable, portable::ExpandPacked24);
BENCHMARK_CAPTURE(Expand24, chosen, ExpandPacked24);

void Pack24(benchmark::State& state, decltype(&LoopPack24) pack) {
    Measure(state, 4, 3, [pack](uint8_t* to, const uint8_t* from) {
        pack(to, reinterpret_cast<const uint32_t*>(from), Samples);
    });
}
BENCHMARK_CAPTURE(Pack24, loop, LoopPack24);
BENCHMARK_CAPTURE(Pack24, portable, portable::PackCapture24);
BENCHMARK_CAPTURE(Pack24, chosen, PackCapture24);

// From here on the portable routine is the plain loop.
void ExpandALaw(benchmark::State& state, decltype(&ExpandCompanded) expand) {
    Measure(state, 1, 2, [expand](uint8_t* to, const uint8_t* from) {
        expand(reinterpret_cast<int16_t*>(to), from, ALawTable, Samples);
    });
}
BENCHMARK_CAPTURE(ExpandALaw, loop, portable::ExpandCompanded);
BENCHMARK_CAPTURE(ExpandALaw, chosen, ExpandCompanded);

// By dither type and channels.
void DitherTo16(benchmark::State& state, decltype(&DitherCapture16) convert) {
    DitherState dither = {};
    Measure(state, 4, 2, [&](uint8_t* to, const uint8_t* from) {
        convert(reinterpret_cast<int16_t*>(to), reinterpret_cast<const int32_t*>(from), Samples,
                static_cast<uint32_t>(state.range(0)), static_cast<unsigned>(state.range(1)), dither);
    });
}

void DitherTo8(benchmark::State& state, decltype(&DitherCapture8) convert) {
    DitherState dither = {};
    Measure(state, 4, 1, [&](uint8_t* to, const uint8_t* from) {
        convert(to, reinterpret_cast<const int32_t*>(from), Samples, static_cast<uint32_t>(state.range(0)),
                static_cast<unsigned>(state.range(1)), dither);
    });
}

void EveryDither(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"type", "channels"});
    for (const int64_t type : {DitherRectangular, DitherTriangular}) {
        benchmark->Args({type, 2});
    }
    for (const int64_t type : {DitherRectangularShaped, DitherTriangularShaped}) {
        benchmark->Args({type, 1})->Args({type, 2});
    }
}
BENCHMARK_CAPTURE(DitherTo16, loop, portable::DitherCapture16)->Apply(EveryDither);
BENCHMARK_CAPTURE(DitherTo16, chosen, DitherCapture16)->Apply(EveryDither);
BENCHMARK_CAPTURE(DitherTo8, loop, portable::DitherCapture8)->Apply(EveryDither);
BENCHMARK_CAPTURE(DitherTo8, chosen, DitherCapture8)->Apply(EveryDither);

}  // namespace
