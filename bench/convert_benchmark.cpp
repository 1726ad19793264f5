// What the sample conversions cost beside copying the bytes that they write.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "convert/capture.h"
#include "convert/expand.h"

namespace {

using namespace kestvox;

constexpr size_t Samples = 16384;

// Runs `convert` over buffers of so many bytes for each sample.
template <typename Convert>
void Measure(benchmark::State& state, size_t sourceSize, size_t destinationSize, Convert convert) {
    const std::vector<uint8_t> source(Samples * sourceSize, 1);
    std::vector<uint8_t> destination(Samples * destinationSize);
    for (auto _ : state) {
        convert(destination.data(), source.data());
        benchmark::DoNotOptimize(destination.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(Samples));
}

// The baselines: the bytes that a conversion to slots, to 3-byte and to 16-bit samples writes.
void Copy(benchmark::State& state) {
    const auto size = static_cast<size_t>(state.range(0));
    Measure(state, size, size,
            [size](uint8_t* to, const uint8_t* from) { memcpy(to, from, Samples * size); });
}
BENCHMARK(Copy)->Arg(4)->Arg(3)->Arg(2);

void Expand24(benchmark::State& state) {
    Measure(state, 3, 4, [](uint8_t* to, const uint8_t* from) {
        ExpandPacked24(reinterpret_cast<uint32_t*>(to), from, Samples);
    });
}
BENCHMARK(Expand24);

void ExpandMuLaw(benchmark::State& state) {
    Measure(state, 1, 2, [](uint8_t* to, const uint8_t* from) {
        ExpandCompanded(reinterpret_cast<int16_t*>(to), from, MuLawTable, Samples);
    });
}
BENCHMARK(ExpandMuLaw);

void Pack24(benchmark::State& state) {
    Measure(state, 4, 3, [](uint8_t* to, const uint8_t* from) {
        PackCapture24(to, reinterpret_cast<const uint32_t*>(from), Samples);
    });
}
BENCHMARK(Pack24);

// By dither type.
void DitherTo16(benchmark::State& state) {
    const auto type = static_cast<uint32_t>(state.range(0));
    DitherState dither = {};
    Measure(state, 4, 2, [&](uint8_t* to, const uint8_t* from) {
        DitherCapture16(reinterpret_cast<int16_t*>(to), reinterpret_cast<const int32_t*>(from), Samples, type,
                        2, dither);
    });
}
BENCHMARK(DitherTo16)->DenseRange(NoDither, DitherTriangularShaped);

}  // namespace
