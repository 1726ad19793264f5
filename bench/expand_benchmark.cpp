// What the output conversions cost beside copying the bytes that they write.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "convert/expand.h"

namespace {

constexpr size_t Samples = 16384;

void CopyOfOutput(benchmark::State& state) {
    const std::vector<uint8_t> source(Samples * 4, 1);
    std::vector<uint8_t> destination(Samples * 4);
    for (auto _ : state) {
        memcpy(destination.data(), source.data(), source.size());
        benchmark::DoNotOptimize(destination.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(Samples));
}
BENCHMARK(CopyOfOutput);

void Packed24(benchmark::State& state) {
    const std::vector<uint8_t> source(Samples * 3, 1);
    std::vector<uint32_t> destination(Samples);
    for (auto _ : state) {
        kestvox::ExpandPacked24(destination.data(), source.data(), Samples);
        benchmark::DoNotOptimize(destination.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(Samples));
}
BENCHMARK(Packed24);

void MuLaw(benchmark::State& state) {
    const std::vector<uint8_t> source(Samples, 1);
    std::vector<int16_t> destination(Samples);
    for (auto _ : state) {
        kestvox::ExpandCompanded(destination.data(), source.data(), kestvox::MuLawTable, Samples);
        benchmark::DoNotOptimize(destination.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(Samples));
}
BENCHMARK(MuLaw);

}  // namespace
