// What a buffer costs on its way from the client through the driver and back, and what an open costs.
#include <benchmark/benchmark.h>

#include <optional>

#include "bench/answering_device.h"
#include "bench/wave_clients.h"
#include "front/unload_driver.h"
#include "platform/machine.h"
#include "simulator/simulator.h"

namespace {

constexpr int64_t LongestBuffer = 10000000;  // microseconds

unsigned CardsFor(int64_t streams) {
    return static_cast<unsigned>((streams + 3) / 4);
}

// Driver and platform layer: a kernel that answers at once. Arguments: streams, bytes of a buffer, bits.
void TurnAround(benchmark::State& state) {
    platform::UseMachine("");
    const auto streams = static_cast<unsigned>(state.range(0));
    AnsweringDevice device(CardsFor(streams));
    {
        WaveClients clients;
        if (!clients.Open(streams, CardsFor(streams), static_cast<WORD>(state.range(2)),
                          static_cast<DWORD>(state.range(1)))) {
            state.SkipWithError("a device cannot be opened");
        }
        const uint64_t before = device.Requests();
        for (auto _ : state) {
            clients.HandIn();
            clients.AwaitAll();
        }
        const auto buffers = static_cast<double>(state.iterations() * clients.Count());
        state.SetItemsProcessed(static_cast<int64_t>(buffers));
        state.counters["requests"] = static_cast<double>(device.Requests() - before) / buffers;
    }
    front::UnloadWaveDriver();
}

// The same way with simulated cards, which play and record every sample.
void TurnAroundSimulated(benchmark::State& state) {
    platform::UseMachine("");
    const auto streams = static_cast<unsigned>(state.range(0));
    simulator::Simulator cards({CardsFor(streams), simulator::TimeKind::Stepped});
    for (unsigned card = 0; card < cards.CardCount(); ++card) {
        cards.SetDigitalInputRate(card, 44100);
    }
    {
        WaveClients clients;
        if (!clients.Open(streams, CardsFor(streams), static_cast<WORD>(state.range(2)),
                          static_cast<DWORD>(state.range(1)))) {
            state.SkipWithError("a device cannot be opened");
        }
        for (auto _ : state) {
            clients.HandIn();
            while (clients.Back() != clients.Count() && cards.AdvanceToNextCompletion(LongestBuffer)) {
            }
        }
        state.SetItemsProcessed(state.iterations() * clients.Count());
    }
    front::UnloadWaveDriver();
}

void StreamsAndSizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"streams", "bytes", "bits"})->UseRealTime()->MeasureProcessCPUTime();
    for (const int64_t streams : {1, 8, 64}) {
        for (const int64_t bytes : {64, 1024, 4096, 65536}) {
            benchmark->Args({streams, bytes, 16});
        }
    }
}
BENCHMARK(TurnAround)->Apply(StreamsAndSizes)->Args({8, 49152, 24});  // packed 24 bits: converted
BENCHMARK(TurnAroundSimulated)->Apply(StreamsAndSizes)->Args({8, 49152, 24});

// Open and close of an output; in stepped time, so no settling is waited for. With another stream of the
// group open the clock runs already: the fast path. Arguments: cards in the machine, another stream open.
void OpenAndClose(benchmark::State& state) {
    platform::UseMachine("");
    simulator::Simulator cards({static_cast<unsigned>(state.range(0)), simulator::TimeKind::Stepped});
    {
        WaveClients other;
        other.Open(state.range(1) != 0 ? 1 : 0, 1, 16, 1024);
        const WAVEFORMATEX format = StereoFormat(16);
        waveOutGetNumDevs();  // the driver is loaded and knows its cards
        cards.ClearTrace();
        for (auto _ : state) {
            HWAVEOUT output = nullptr;
            if (waveOutOpen(&output, 1, &format, 0, 0, CALLBACK_NULL) != MMSYSERR_NOERROR) {
                state.SkipWithError("the device cannot be opened");
                break;
            }
            waveOutClose(output);
        }
        const auto requests = static_cast<double>(cards.RequestCount());
        state.counters["requests"] = requests / static_cast<double>(state.iterations());
        state.SetItemsProcessed(state.iterations());
    }
    front::UnloadWaveDriver();
}
BENCHMARK(OpenAndClose)->ArgNames({"cards", "fast"})->ArgsProduct({{1, 4, 16}, {0, 1}})->Iterations(50);

}  // namespace
