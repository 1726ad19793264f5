// One input device that records: a plain client of the waveIn calls.
#pragma once

#include <windows.h>
#include <mmsystem.h>
#include <mmreg.h>

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "tools/streams/wave_stream.h"

namespace kestvox {

class WaveInput final : public WaveStream {
public:
    // Is given the recorded bytes of each buffer, in order, on the owner's thread.
    using Sink = std::function<void(std::span<const char>)>;

    // Opens the device in that format, which has its cbSize bytes behind it. CommandError when the device
    // refuses.
    WaveInput(UINT device, const WAVEFORMATEX& format, HANDLE done, Sink sink);
    // Stops and closes what is still open.
    ~WaveInput() override;

    // `count` buffers of `milliseconds`, rounded up to a length that the card fills to its end.
    void PrepareBuffers(unsigned count, unsigned milliseconds);

    // Records at least `frames` before it counts as finished; 0: for as long as it is let.
    void SetFrameCount(uint64_t frames);
    static constexpr uint64_t Endless = uint64_t{1} << 40;  // frames: until there is another count

    uint64_t FramesTaken() const { return bytesTaken_ / Format().nBlockAlign; }

    uint32_t Channel() const override { return simulator::InputChannel(Port()); }
    const WAVEFORMATEX& Format() const override {
        return *reinterpret_cast<const WAVEFORMATEX*>(format_.data());
    }
    std::optional<uint64_t> FrameCount() const override {
        return frameCount_ == 0 || frameCount_ >= Endless ? std::nullopt : std::optional(frameCount_);
    }
    bool EndsByCount() const override { return frameCount_ != 0; }
    uint64_t HeadersUnused(uint64_t) const override { return emptyBack_; }
    bool IsFinished(uint64_t frames) const override { return frames >= frameCount_; }
    bool AllBack() const override { return stopped_; }  // until then there is more to record
    void QueueFirst(bool together) override;
    void Start(bool together) override;
    void Refill() override;
    void Stop() override;
    StreamStatus Status(const simulator::Simulator& cards) const override;

private:
    static void CALLBACK OnMessage(HWAVEIN handle, UINT message, DWORD_PTR instance, DWORD_PTR first,
                                   DWORD_PTR second);
    MMRESULT PrepareHeader(WAVEHDR& header) override;
    MMRESULT UnprepareHeader(WAVEHDR& header) override;
    MMRESULT HandOver(WAVEHDR& header) override;
    MMRESULT CloseDevice() override;
    MMRESULT GetPosition(MMTIME& time) const override;
    void TakeRest() override;
    void Take(Buffer& buffer);

    std::vector<uint8_t> format_;
    Sink sink_;
    HWAVEIN handle_ = nullptr;
    uint64_t frameCount_ = 0;
    uint64_t bytesTaken_ = 0;
    uint64_t emptyBack_ = 0;   // headers that came back empty before the stop
    std::vector<bool> taken_;  // of each buffer: holds nothing that the sink has not been given
    unsigned next_ = 0;        // the buffer to take and to hand over next
    bool stopped_ = false;
};

}  // namespace kestvox
