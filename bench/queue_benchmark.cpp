// What one buffer costs when many others are queued already: a turn of the queue, a loop and a reset.
#include <benchmark/benchmark.h>

#include <atomic>
#include <vector>

#include "bench/answering_device.h"
#include "bench/wave_clients.h"
#include "front/unload_driver.h"
#include "platform/machine.h"

namespace {

constexpr DWORD BufferSize = 192;  // 24-bit stereo: 32 frames

// One output and its headers, which the client hands in by number.
class QueuedOutput {
public:
    QueuedOutput(WORD bits, size_t headers) : headers_(headers), data_(BufferSize) {
        const WAVEFORMATEX format = StereoFormat(bits);
        waveOutOpen(&output_, 0, &format, reinterpret_cast<DWORD_PTR>(&OnEvent),
                    reinterpret_cast<DWORD_PTR>(this), CALLBACK_FUNCTION);
        for (WAVEHDR& header : headers_) {
            header.lpData = data_.data();  // nobody reads the samples
            header.dwBufferLength = BufferSize;
            waveOutPrepareHeader(output_, &header, sizeof header);
        }
    }
    ~QueuedOutput() {
        waveOutReset(output_);
        waveOutClose(output_);
    }
    QueuedOutput(const QueuedOutput&) = delete;
    QueuedOutput& operator=(const QueuedOutput&) = delete;

    bool Write(size_t index) {
        return waveOutWrite(output_, &headers_[index], sizeof headers_[index]) == MMSYSERR_NOERROR;
    }
    bool WriteAll() {
        bool written = true;
        for (size_t i = 0; i < headers_.size(); ++i) {
            written = Write(i) && written;
        }
        return written;
    }
    void MakeLoop(DWORD passes) {
        headers_.front().dwFlags |= WHDR_BEGINLOOP;
        headers_.back().dwFlags |= WHDR_ENDLOOP;
        headers_.front().dwLoops = passes;
    }
    void Reset() { waveOutReset(output_); }
    void AwaitBack(unsigned count) {
        for (unsigned back = back_; back < count; back = back_) {
            back_.wait(back);
        }
    }

private:
    static void CALLBACK OnEvent(HWAVEOUT, UINT message, DWORD_PTR instance, DWORD_PTR, DWORD_PTR) {
        if (message == WOM_DONE) {
            auto& back = reinterpret_cast<QueuedOutput*>(instance)->back_;
            ++back;
            back.notify_one();
        }
    }

    HWAVEOUT output_ = nullptr;
    std::vector<WAVEHDR> headers_;
    std::vector<char> data_;
    std::atomic<unsigned> back_ = 0;
};

void EveryLength(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"queued", "bits"})->MeasureProcessCPUTime()->UseRealTime();
    benchmark->ArgsProduct({{10, 1000, 100000}, {16, 24}});
}

// One buffer completes, comes back and is written again, while the others stay queued.
void TurnOfAQueue(benchmark::State& state) {
    platform::UseMachine("");
    AnsweringDevice device(1);
    device.HoldBuffers();
    {
        const auto count = static_cast<size_t>(state.range(0));
        QueuedOutput output(static_cast<WORD>(state.range(1)), count);
        if (!output.WriteAll()) {
            state.SkipWithError("a buffer is refused");
        }
        size_t next = 0;
        unsigned back = 0;
        for (auto _ : state) {
            device.CompleteNext();
            output.AwaitBack(++back);
            output.Write(next);
            next = (next + 1) % count;
        }
        state.SetItemsProcessed(state.iterations());
    }
    front::UnloadWaveDriver();
}
BENCHMARK(TurnOfAQueue)->Apply(EveryLength);

// All buffers, played twice by a loop over all of them or straight on. An item is a buffer played.
void PlayAll(benchmark::State& state, bool loop) {
    constexpr DWORD Passes = 2;
    platform::UseMachine("");
    AnsweringDevice device(1);
    {
        const auto count = static_cast<unsigned>(state.range(0));
        QueuedOutput output(static_cast<WORD>(state.range(1)), count);
        if (loop) {
            output.MakeLoop(Passes);
        }
        unsigned back = 0;
        for (auto _ : state) {
            for (DWORD pass = 0; pass < (loop ? 1 : Passes); ++pass) {
                output.WriteAll();
                back += count;
                output.AwaitBack(back);
            }
        }
        state.SetItemsProcessed(state.iterations() * count * Passes);
    }
    front::UnloadWaveDriver();
}
BENCHMARK_CAPTURE(PlayAll, straight, false)->Apply(EveryLength);
BENCHMARK_CAPTURE(PlayAll, looped, true)->Apply(EveryLength);

// Everything queued is written, and comes back by one reset. An item is a buffer.
void WriteAndReset(benchmark::State& state) {
    platform::UseMachine("");
    AnsweringDevice device(1);
    device.HoldBuffers();
    {
        const auto count = static_cast<unsigned>(state.range(0));
        QueuedOutput output(static_cast<WORD>(state.range(1)), count);
        unsigned back = 0;
        for (auto _ : state) {
            output.WriteAll();
            output.Reset();
            back += count;
            output.AwaitBack(back);
        }
        state.SetItemsProcessed(state.iterations() * count);
    }
    front::UnloadWaveDriver();
}
BENCHMARK(WriteAndReset)->Apply(EveryLength);

}  // namespace
