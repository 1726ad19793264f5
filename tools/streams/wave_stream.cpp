#include "tools/streams/wave_stream.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "report/wave_format.h"
#include "tools/command_error.h"
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
    const auto stride = static_cast<size_t>(RoundUp(bytes, BufferAlignment));
    memory_ = std::make_unique_for_overwrite<char[]>(stride * count);
    buffers_ = std::make_unique<Buffer[]>(count);
    bufferBytes_ = bytes;
    bufferCount_ = count;  // from now on a close has headers to unprepare
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
    NoteHeader(simulator::HeaderEvent::Kind::Queued, buffer.Header);
    if (!Check(call, HandOver(buffer.Header))) {
        --buffer.Writes;
        NoteHeader(simulator::HeaderEvent::Kind::Refused, buffer.Header);
        return false;
    }
    NoteHeader(simulator::HeaderEvent::Kind::Taken, buffer.Header);
    return true;
}

void WaveStream::NoteHeader(simulator::HeaderEvent::Kind what, const WAVEHDR& header) const {
    if (headerSink_) {
        headerSink_(what, header);
    }
}

void WaveStream::CountBack(DWORD_PTR header) {
    auto* buffer = reinterpret_cast<Buffer*>(reinterpret_cast<const WAVEHDR*>(header)->dwUser);
    NoteHeader(simulator::HeaderEvent::Kind::Returned, buffer->Header);
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

uint64_t WaveStream::HeadersReturned() const {
    uint64_t returned = 0;
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
            .Gaps = {},
            .BuffersInFlight = out,
            .MostInFlight = out,
            .BuffersMoved = 0};
}

unsigned WaveStream::HeadersOut() const {
    unsigned out = 0;
    for (unsigned i = 0; i < bufferCount_; ++i) {
        out += buffers_[i].Returns.load(std::memory_order_acquire) < buffers_[i].Writes ? 1 : 0;
    }
    return out;
}

const std::string& WaveStream::Problem() {
    CheckReturns();
    return problem_;
}

void WaveStream::RefuseOpen(MMRESULT result, const std::string& what, const FormatQueries& queries) const {
    const std::string more = result == WAVERR_BADFORMAT ? "; " + SayWhatIsAccepted(queries, Format()) : "";
    throw CommandError("device " + std::to_string(device_) + ": " + DescribeWaveError(result) + " (" + what +
                       DescribeFormat(Format()) + ")" + more);
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

void WaveStream::NoteSamples(std::span<const char> samples) {
    NoteLevel(samples);
    if (sampleSink_) {
        sampleSink_(samples);
    }
}

void WaveStream::NoteLevel(std::span<const char> samples) {
    const size_t size = Format().nChannels ? size_t{Format().nBlockAlign} / Format().nChannels : 0;
    if (!watchesLevel_ || !IsWhole(Format()) || size < 1 || size > sizeof(int32_t)) {
        return;
    }
    for (size_t at = 0; at + size <= samples.size(); at += size) {
        uint32_t slot = 0;
        std::memcpy(reinterpret_cast<char*>(&slot) + sizeof slot - size, &samples[at], size);
        const auto value = static_cast<int32_t>(size == 1 ? slot ^ 0x80000000 : slot);
        peak_ = std::max(peak_, std::abs(static_cast<double>(value)) / 2147483648.0);
    }
}

std::optional<double> WaveStream::TakeLevel() {
    const double peak = std::exchange(peak_, 0);
    return peak > 0 ? std::optional(20 * std::log10(peak)) : std::nullopt;
}

void WaveStream::NoteProblem(const std::string& problem) {
    if (problem_.empty()) {
        problem_ = problem;
    }
}

}  // namespace kestvox
