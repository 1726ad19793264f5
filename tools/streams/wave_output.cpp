#include "tools/streams/wave_output.h"

#include <algorithm>
#include <utility>

namespace kestvox {

WaveOutput::WaveOutput(UINT device, const std::string& path, HANDLE done)
    : WaveStream(device, "waveOut", done), file_(path) {
    const MMRESULT result =
        waveOutOpen(&handle_, device, &file_.Format(), reinterpret_cast<DWORD_PTR>(&WaveOutput::OnMessage),
                    reinterpret_cast<DWORD_PTR>(this), CALLBACK_FUNCTION);
    if (result != MMSYSERR_NOERROR) {
        handle_ = nullptr;
        RefuseOpen(result, path + ": ");
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
    const uint64_t frames = FramesIn(milliseconds);
    const uint64_t needed = (file_.FrameCount() + frames - 1) / frames;
    passes_ = passes;
    AllocateBuffers(static_cast<unsigned>(passes > 1 ? needed : std::min<uint64_t>(count, needed)),
                    static_cast<size_t>(std::min(frames, file_.FrameCount())) * Format().nBlockAlign);
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

void WaveOutput::Refill() {
    while (!allWritten_ && Problem().empty()) {
        Buffer& buffer = BufferAt(next_);
        if (!buffer.IsBack()) {
            return;
        }
        WAVEHDR& header = buffer.Header;
        header.dwBufferLength = static_cast<DWORD>(file_.Read({header.lpData, BufferBytes()}));
        if (!QueueBuffer("Write", buffer)) {
            return;
        }
        next_ = (next_ + 1) % BufferCount();
        allWritten_ = file_.AtEnd();
    }
}

void WaveOutput::Stop() {
    Check("Reset", waveOutReset(handle_));
}

StreamStatus WaveOutput::Status(const simulator::Simulator& cards) const {
    const simulator::OutputStatus status = cards.Output(Card(), Port());
    return {.StartFrame = status.Started ? std::optional(status.StartFrame) : std::nullopt,
            .Frames = status.FramesPlayed,
            .IdleFrames = status.FramesSilent,
            .BuffersInFlight = status.BuffersInFlight,
            .MostInFlight = status.MostInFlight};
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
