#include "tools/streams/wave_output.h"

#include <algorithm>
#include <utility>

#include "tools/command_error.h"

namespace kestvox {

WaveOutput::WaveOutput(UINT device, WavReader file, HANDLE done)
    : WaveStream(device, "waveOut", done), file_(std::move(file)) {
    const MMRESULT result =
        waveOutOpen(&handle_, device, &file_.Format(), reinterpret_cast<DWORD_PTR>(&WaveOutput::OnMessage),
                    reinterpret_cast<DWORD_PTR>(this), CALLBACK_FUNCTION);
    if (result != MMSYSERR_NOERROR) {
        handle_ = nullptr;
        RefuseOpen(
            result, file_.Path() + ": ",
            {[device](const WAVEFORMATEX& format) {
                 return waveOutOpen(nullptr, device, &format, 0, 0, WAVE_FORMAT_QUERY) == MMSYSERR_NOERROR;
             },
             [device](const WAVEFORMATEX& format) {
                 HWAVEOUT handle = nullptr;
                 return waveOutOpen(&handle, device, &format, 0, 0, CALLBACK_NULL) == MMSYSERR_NOERROR &&
                        waveOutClose(handle) == MMSYSERR_NOERROR;
             }});
    }
}

WaveOutput::~WaveOutput() {
    if (handle_) {
        Stop();
        Close();
    }
}

// Runs on a thread of the driver, which holds its lock.
void CALLBACK WaveOutput::OnMessage(HWAVEOUT, UINT message, DWORD_PTR instance, DWORD_PTR first, DWORD_PTR) {
    if (message == WOM_DONE) {
        reinterpret_cast<WaveOutput*>(instance)->CountBack(first);
    }
}

void WaveOutput::SetVolume(WORD volume) {
    Require("SetVolume", waveOutSetVolume(handle_, static_cast<DWORD>(MAKELONG(volume, volume))));
}

void WaveOutput::PrepareBuffers(unsigned count, unsigned milliseconds, DWORD passes) {
    const std::optional<uint64_t> length = file_.FrameCount();
    if (passes > 1 && !length) {
        throw CommandError(file_.Path() + ": cannot be played as a loop, as its length is not known");
    }
    const uint64_t frames = std::min(FramesIn(milliseconds), length.value_or(UINT64_MAX));
    const uint64_t needed = length ? (*length + frames - 1) / frames : count;
    passes_ = passes;
    AllocateBuffers(static_cast<unsigned>(passes > 1 ? needed : std::min<uint64_t>(count, needed)),
                    static_cast<size_t>(frames) * Format().nBlockAlign);
    if (passes > 1) {
        BufferAt(0).Header.dwFlags |= WHDR_BEGINLOOP;
        BufferAt(0).Header.dwLoops = passes;
        BufferAt(BufferCount() - 1).Header.dwFlags |= WHDR_ENDLOOP;
    }
}

// A device that starts with others is filled while paused.
void WaveOutput::QueueFirst(bool together) {
    if (together) {
        Check("Pause", waveOutPause(handle_));
    }
    Refill();
}

void WaveOutput::Start(bool together) {
    if (together) {
        Check("Restart", waveOutRestart(handle_));
    }
}

// Each buffer once, so that a driver that gives every one back at once does not keep the program here.
void WaveOutput::Refill() {
    for (unsigned i = 0; i < BufferCount() && !allWritten_ && Problem().empty(); ++i) {
        Buffer& buffer = BufferAt(next_);
        if (!buffer.IsBack() || !Fill(buffer) || !QueueBuffer("Write", buffer)) {
            return;
        }
        next_ = (next_ + 1) % BufferCount();
    }
}

// False when there was nothing left, or the user has interrupted.
bool WaveOutput::Fill(Buffer& buffer) {
    WAVEHDR& header = buffer.Header;
    try {
        header.dwBufferLength = static_cast<DWORD>(file_.Read({header.lpData, BufferBytes()}));
    } catch (const CommandError& error) {
        NoteProblem(error.what());
        return false;
    }
    allWritten_ = file_.AtEnd();
    NoteSamples({header.lpData, header.dwBufferLength});
    return header.dwBufferLength > 0;
}

// The card is through with a buffer before the driver gives its header back.
uint64_t WaveOutput::HeadersUnused(uint64_t moved) const {
    const uint64_t back = HeadersReturned() * passes_;
    return back > moved ? back - moved : 0;
}

std::optional<uint64_t> WaveOutput::FrameCount() const {
    const std::optional<uint64_t> length = file_.FrameCount();
    return length ? std::optional(*length * passes_) : std::nullopt;
}

void WaveOutput::Stop() {
    Check("Reset", waveOutReset(handle_));
}

StreamStatus WaveOutput::Status(const simulator::Simulator& cards) const {
    const simulator::OutputStatus status = cards.Output(Card(), Port());
    return {.StartFrame = status.Started ? std::optional(status.StartFrame) : std::nullopt,
            .Frames = status.FramesPlayed,
            .IdleFrames = status.FramesSilent,
            .Gaps = status.Underruns,
            .BuffersInFlight = status.BuffersInFlight,
            .MostInFlight = status.MostInFlight,
            .BuffersMoved = status.BuffersFinished - status.BuffersFlushed};
}

MMRESULT WaveOutput::PrepareHeader(WAVEHDR& header) {
    return waveOutPrepareHeader(handle_, &header, sizeof header);
}

MMRESULT WaveOutput::UnprepareHeader(WAVEHDR& header) {
    return waveOutUnprepareHeader(handle_, &header, sizeof header);
}

MMRESULT WaveOutput::HandOver(WAVEHDR& header) {
    return waveOutWrite(handle_, &header, sizeof header);
}

MMRESULT WaveOutput::CloseDevice() {
    return waveOutClose(std::exchange(handle_, nullptr));
}

MMRESULT WaveOutput::GetPosition(MMTIME& time) const {
    return waveOutGetPosition(handle_, &time, sizeof time);
}

}  // namespace kestvox
