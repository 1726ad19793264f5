#include "tools/streams/wave_input.h"

#include <utility>

namespace kestvox {
namespace {

// A stop keeps whole units of so many bytes of card memory; a frame of sound has at least one byte there.
constexpr uint64_t StopUnit = 32;

// The card fills whole words.
constexpr uint64_t FrameStep = 4;

}  // namespace

WaveInput::WaveInput(UINT device, const WAVEFORMATEX& format, HANDLE done, Sink sink)
    : WaveStream(device, "waveIn", done), sink_(std::move(sink)) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(&format);
    format_.assign(bytes, bytes + sizeof format + format.cbSize);
    const MMRESULT result =
        waveInOpen(&handle_, device, &Format(), reinterpret_cast<DWORD_PTR>(&WaveInput::OnMessage),
                   reinterpret_cast<DWORD_PTR>(this), CALLBACK_FUNCTION);
    if (result != MMSYSERR_NOERROR) {
        handle_ = nullptr;
        RefuseOpen(result, "recording ",
                   {[device](const WAVEFORMATEX& asked) {
                        return waveInOpen(nullptr, device, &asked, 0, 0, WAVE_FORMAT_QUERY) ==
                               MMSYSERR_NOERROR;
                    },
                    [device](const WAVEFORMATEX& asked) {
                        HWAVEIN handle = nullptr;
                        return waveInOpen(&handle, device, &asked, 0, 0, CALLBACK_NULL) == MMSYSERR_NOERROR &&
                               waveInClose(handle) == MMSYSERR_NOERROR;
                    }});
    }
}

WaveInput::~WaveInput() {
    if (handle_) {
        Stop();
        Close();
    }
}

// Runs on a thread of the driver, which holds its lock.
void CALLBACK WaveInput::OnMessage(HWAVEIN, UINT message, DWORD_PTR instance, DWORD_PTR first, DWORD_PTR) {
    if (message == WIM_DATA) {
        reinterpret_cast<WaveInput*>(instance)->CountBack(first);
    }
}

void WaveInput::PrepareBuffers(unsigned count, unsigned milliseconds) {
    taken_.assign(count, true);
    AllocateBuffers(count,
                    static_cast<size_t>(RoundUp(FramesIn(milliseconds), FrameStep)) * Format().nBlockAlign);
}

void WaveInput::SetFrameCount(uint64_t frames) {
    frameCount_ = RoundUp(frames, StopUnit);
}

void WaveInput::QueueFirst(bool) {
    Refill();
}

void WaveInput::Start(bool) {
    Check("Start", waveInStart(handle_));
}

// Each buffer once, so that a driver that gives every one back at once does not keep the program here.
void WaveInput::Refill() {
    for (unsigned i = 0; i < BufferCount() && Problem().empty(); ++i) {
        Buffer& buffer = BufferAt(next_);
        if (!buffer.IsBack()) {
            return;
        }
        Take(buffer);
        if (!QueueBuffer("AddBuffer", buffer)) {
            return;
        }
        taken_[next_] = false;
        next_ = (next_ + 1) % BufferCount();
    }
}

void WaveInput::Stop() {
    stopped_ = true;
    Check("Stop", waveInStop(handle_));
    Check("Reset", waveInReset(handle_));
}

void WaveInput::Take(Buffer& buffer) {
    const auto index = static_cast<size_t>(&buffer - &BufferAt(0));
    if (!taken_[index]) {
        taken_[index] = true;
        bytesTaken_ += buffer.Header.dwBytesRecorded;
        emptyBack_ += buffer.Header.dwBytesRecorded == 0 && !stopped_ ? 1 : 0;
        NoteSamples({buffer.Header.lpData, buffer.Header.dwBytesRecorded});
        sink_({buffer.Header.lpData, buffer.Header.dwBytesRecorded});
    }
}

void WaveInput::TakeRest() {
    for (unsigned i = 0; i < BufferCount(); ++i) {
        Buffer& buffer = BufferAt(next_ + i);
        if (buffer.IsBack()) {
            Take(buffer);
        }
    }
}

StreamStatus WaveInput::Status(const simulator::Simulator& cards) const {
    const simulator::InputStatus status = cards.Input(Card(), Port());
    return {.StartFrame = status.Started ? std::optional(status.StartFrame) : std::nullopt,
            .Frames = status.FramesRecorded,
            .IdleFrames = status.FramesDropped,
            .Gaps = status.Overruns,
            .BuffersInFlight = status.BuffersInFlight,
            .MostInFlight = status.MostInFlight,
            .BuffersMoved = status.BuffersFinished - status.BuffersFlushed};
}

MMRESULT WaveInput::PrepareHeader(WAVEHDR& header) {
    return waveInPrepareHeader(handle_, &header, sizeof header);
}

MMRESULT WaveInput::UnprepareHeader(WAVEHDR& header) {
    return waveInUnprepareHeader(handle_, &header, sizeof header);
}

MMRESULT WaveInput::HandOver(WAVEHDR& header) {
    return waveInAddBuffer(handle_, &header, sizeof header);
}

MMRESULT WaveInput::CloseDevice() {
    return waveInClose(std::exchange(handle_, nullptr));
}

MMRESULT WaveInput::GetPosition(MMTIME& time) const {
    return waveInGetPosition(handle_, &time, sizeof time);
}

}  // namespace kestvox
