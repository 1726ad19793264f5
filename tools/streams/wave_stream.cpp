#include "tools/streams/wave_stream.h"

#include <algorithm>

#include "tools/command_error.h"
#include "tools/files/wave_format.h"
#include "tools/streams/wave_error.h"

namespace kestvox {
namespace {

// Samples of any width, and pairs of them, then lie on their natural boundaries.
constexpr size_t BufferAlignment = 16;

}  // namespace

uint64_t WaveStream::FramesIn(unsigned milliseconds) const {
    return std::max<uint64_t>(1, uint64_t{Format().nSamplesPerSec} * milliseconds / 1000);
}

void WaveStream::AllocateBuffers(unsigned count, size_t bytes) {
    bufferCount_ = count;
    bufferBytes_ = bytes;
    const auto stride = static_cast<size_t>(RoundUp(bytes, BufferAlignment));
    memory_ = std::make_unique_for_overwrite<char[]>(stride * count);
    buffers_ = std::make_unique<Buffer[]>(count);
    for (unsigned i = 0; i < count; ++i) {
        WAVEHDR& header = buffers_[i].Header;
        header.lpData = memory_.get() + i * stride;
        header.dwBufferLength = static_cast<DWORD>(bytes);
        header.dwUser = reinterpret_cast<DWORD_PTR>(&buffers_[i]);
        Require("PrepareHeader", PrepareHeader(header));
    }
}

bool WaveStream::QueueBuffer(const char* call, Buffer& buffer) {
    ++buffer.Writes;
    if (!Check(call, HandOver(buffer.Header))) {
        --buffer.Writes;
        return false;
    }
    return true;
}

void WaveStream::CountBack(DWORD_PTR header) {
    auto* buffer = reinterpret_cast<Buffer*>(reinterpret_cast<const WAVEHDR*>(header)->dwUser);
    buffer->Returns.fetch_add(1, std::memory_order_release);
    SetEvent(done_);
}

void WaveStream::Close() {
    TakeRest();
    if (const unsigned out = HeadersOut()) {
        NoteProblem("device " + std::to_string(device_) + ": " + std::to_string(out) +
                    (out == 1 ? " header" : " headers") + " did not come back");
    }
    for (unsigned i = 0; i < bufferCount_; ++i) {
        WAVEHDR& header = buffers_[i].Header;
        if (header.dwFlags & WHDR_PREPARED) {
            Check("UnprepareHeader", UnprepareHeader(header));
        }
    }
    Check("Close", CloseDevice());
}

unsigned WaveStream::HeadersReturned() const {
    unsigned returned = 0;
    for (unsigned i = 0; i < bufferCount_; ++i) {
        returned += buffers_[i].Returns.load(std::memory_order_acquire);
    }
    return returned;
}

StreamStatus WaveStream::StatusByPosition() const {
    MMTIME time{};
    time.wType = TIME_SAMPLES;
    const bool known = GetPosition(time) == MMSYSERR_NOERROR && time.wType == TIME_SAMPLES;
    const unsigned out = HeadersOut();
    return {.StartFrame = {},
            .Frames = known ? time.u.sample : 0,
            .IdleFrames = 0,
            .BuffersInFlight = out,
            .MostInFlight = out};
}

unsigned WaveStream::HeadersOut() const {
    unsigned out = 0;
    for (unsigned i = 0; i < bufferCount_; ++i) {
        const unsigned returns = buffers_[i].Returns.load(std::memory_order_acquire);
        out += returns < buffers_[i].Writes ? buffers_[i].Writes - returns : 0;
    }
    return out;
}

const std::string& WaveStream::Problem() {
    CheckReturns();
    return problem_;
}

void WaveStream::RefuseOpen(MMRESULT result, const std::string& what) const {
    throw CommandError("device " + std::to_string(device_) + ": " + DescribeWaveError(result) + " (" + what +
                       DescribeFormat(Format()) + ")");
}

std::string WaveStream::Failure(const char* call, MMRESULT result) const {
    return "device " + std::to_string(device_) + ": " + calls_ + call + ": " + DescribeWaveError(result);
}

void WaveStream::Require(const char* call, MMRESULT result) const {
    if (result != MMSYSERR_NOERROR) {
        throw CommandError(Failure(call, result));
    }
}

bool WaveStream::Check(const char* call, MMRESULT result) {
    if (result != MMSYSERR_NOERROR) {
        NoteProblem(Failure(call, result));
    }
    return result == MMSYSERR_NOERROR;
}

void WaveStream::CheckReturns() {
    for (unsigned i = 0; i < bufferCount_; ++i) {
        if (buffers_[i].Returns.load(std::memory_order_acquire) > buffers_[i].Writes) {
            NoteProblem("device " + std::to_string(device_) +
                        ": a header came back more often than it was handed over");
        }
    }
}

void WaveStream::NoteProblem(const std::string& problem) {
    if (problem_.empty()) {
        problem_ = problem;
    }
}

}  // namespace kestvox
