#include "tools/wave_output.h"

#include <algorithm>
#include <span>

#include "tools/command_error.h"
#include "tools/wave_error.h"
#include "tools/wave_format.h"

namespace kestvox {
namespace {

// Samples of any width, and pairs of them, then lie on their natural boundaries.
constexpr size_t BufferAlignment = 16;

size_t RoundUp(size_t size) {
    return (size + BufferAlignment - 1) / BufferAlignment * BufferAlignment;
}

}  // namespace

WaveOutput::WaveOutput(UINT device, const std::string& path, HANDLE done)
    : device_(device), file_(path), done_(done) {
    const MMRESULT result =
        waveOutOpen(&handle_, device_, &file_.Format(), reinterpret_cast<DWORD_PTR>(&WaveOutput::OnMessage),
                    reinterpret_cast<DWORD_PTR>(this), CALLBACK_FUNCTION);
    if (result != MMSYSERR_NOERROR) {
        handle_ = nullptr;
        throw CommandError("device " + std::to_string(device_) + ": " + DescribeWaveError(result) + " (" +
                           path + ": " + DescribeFormat(file_.Format()) + ")");
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
        const auto* header = reinterpret_cast<const WAVEHDR*>(first);
        reinterpret_cast<Buffer*>(header->dwUser)->Returns.fetch_add(1, std::memory_order_release);
        SetEvent(reinterpret_cast<const WaveOutput*>(instance)->done_);
    }
}

void WaveOutput::SetVolume(WORD volume) {
    Require("waveOutSetVolume", waveOutSetVolume(handle_, static_cast<DWORD>(MAKELONG(volume, volume))));
}

void WaveOutput::Pause() {
    Require("waveOutPause", waveOutPause(handle_));
}

void WaveOutput::Restart() {
    Require("waveOutRestart", waveOutRestart(handle_));
}

void WaveOutput::PrepareBuffers(unsigned count, unsigned milliseconds, DWORD passes) {
    const uint64_t frames = std::max<uint64_t>(1, uint64_t{Format().nSamplesPerSec} * milliseconds / 1000);
    const uint64_t needed = (file_.FrameCount() + frames - 1) / frames;
    passes_ = passes;
    bufferBytes_ = static_cast<size_t>(std::min(frames, file_.FrameCount())) * Format().nBlockAlign;
    bufferCount_ = static_cast<unsigned>(passes > 1 ? needed : std::min<uint64_t>(count, needed));

    const size_t stride = RoundUp(bufferBytes_);
    memory_ = std::make_unique_for_overwrite<char[]>(stride * bufferCount_);
    buffers_ = std::make_unique<Buffer[]>(bufferCount_);
    for (unsigned i = 0; i < bufferCount_; ++i) {
        WAVEHDR& header = buffers_[i].Header;
        header.lpData = memory_.get() + i * stride;
        header.dwBufferLength = static_cast<DWORD>(bufferBytes_);
        header.dwUser = reinterpret_cast<DWORD_PTR>(&buffers_[i]);
        Require("waveOutPrepareHeader", waveOutPrepareHeader(handle_, &header, sizeof header));
    }
    if (passes > 1) {
        buffers_[0].Header.dwFlags |= WHDR_BEGINLOOP;
        buffers_[0].Header.dwLoops = passes;
        buffers_[bufferCount_ - 1].Header.dwFlags |= WHDR_ENDLOOP;
    }
}

void WaveOutput::Refill() {
    CheckReturns();
    while (!allWritten_ && problem_.empty()) {
        Buffer& buffer = buffers_[next_];
        if (buffer.Returns.load(std::memory_order_acquire) != buffer.Writes) {
            return;
        }
        WAVEHDR& header = buffer.Header;
        header.dwBufferLength = static_cast<DWORD>(file_.Read({header.lpData, bufferBytes_}));
        ++buffer.Writes;
        if (!Check("waveOutWrite", waveOutWrite(handle_, &header, sizeof header))) {
            --buffer.Writes;
            return;
        }
        next_ = (next_ + 1) % bufferCount_;
        allWritten_ = file_.AtEnd();
    }
}

void WaveOutput::Stop() {
    Check("waveOutReset", waveOutReset(handle_));
}

void WaveOutput::Close() {
    if (const unsigned out = HeadersOut()) {
        NoteProblem("device " + std::to_string(device_) + ": " + std::to_string(out) +
                    (out == 1 ? " header" : " headers") + " did not come back");
    }
    for (unsigned i = 0; i < bufferCount_; ++i) {
        WAVEHDR& header = buffers_[i].Header;
        if (header.dwFlags & WHDR_PREPARED) {
            Check("waveOutUnprepareHeader", waveOutUnprepareHeader(handle_, &header, sizeof header));
        }
    }
    Check("waveOutClose", waveOutClose(handle_));
    handle_ = nullptr;
}

DWORD WaveOutput::Position() const {
    MMTIME position{};
    position.wType = TIME_SAMPLES;
    waveOutGetPosition(handle_, &position, sizeof position);
    return position.u.sample;
}

unsigned WaveOutput::HeadersReturned() const {
    unsigned returned = 0;
    for (unsigned i = 0; i < bufferCount_; ++i) {
        returned += buffers_[i].Returns.load(std::memory_order_acquire);
    }
    return returned;
}

unsigned WaveOutput::HeadersOut() const {
    unsigned out = 0;
    for (unsigned i = 0; i < bufferCount_; ++i) {
        const unsigned returns = buffers_[i].Returns.load(std::memory_order_acquire);
        out += returns < buffers_[i].Writes ? buffers_[i].Writes - returns : 0;
    }
    return out;
}

const std::string& WaveOutput::Problem() {
    CheckReturns();
    return problem_;
}

std::string WaveOutput::Failure(const char* call, MMRESULT result) const {
    return "device " + std::to_string(device_) + ": " + call + ": " + DescribeWaveError(result);
}

void WaveOutput::Require(const char* call, MMRESULT result) const {
    if (result != MMSYSERR_NOERROR) {
        throw CommandError(Failure(call, result));
    }
}

bool WaveOutput::Check(const char* call, MMRESULT result) {
    if (result != MMSYSERR_NOERROR) {
        NoteProblem(Failure(call, result));
    }
    return result == MMSYSERR_NOERROR;
}

void WaveOutput::CheckReturns() {
    for (unsigned i = 0; i < bufferCount_; ++i) {
        if (buffers_[i].Returns.load(std::memory_order_acquire) > buffers_[i].Writes) {
            NoteProblem("device " + std::to_string(device_) +
                        ": a header came back more often than it was written");
        }
    }
}

void WaveOutput::NoteProblem(const std::string& problem) {
    if (problem_.empty()) {
        problem_ = problem;
    }
}

}  // namespace kestvox
