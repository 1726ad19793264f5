#include "tools/streams/input_feed.h"

#include <algorithm>

#include "report/samples.h"
#include "report/wave_format.h"
#include "tools/command_error.h"

namespace kestvox {
namespace {

using simulator::Frame;

constexpr size_t FramesAtOnce = 4096;

bool CanBePluggedIn(const WAVEFORMATEX& format) {
    return (IsFloat(format) || IsWhole(format)) && HasKnownSamples(format);
}

}  // namespace

InputFeed::InputFeed(const std::string& path) : reader_(path) {
    if (!CanBePluggedIn(Format())) {
        throw CommandError(path +
                           ": cannot be plugged in, only PCM or floating point of one or two channels (" +
                           DescribeFormat(Format()) + ")");
    }
}

std::string InputFeed::ConversionNote() const {
    return IsFloat(Format()) ? reader_.Path() + ": floating-point samples are rounded to 32 bits" : "";
}

std::optional<uint64_t> InputFeed::FrameCount() const {
    const std::lock_guard guard(mutex_);
    return reader_.FrameCount();
}

simulator::InputSignal InputFeed::Signal() {
    return simulator::InputSignal::Stream([this](std::span<Frame> frames) { return Take(frames); });
}

void InputFeed::Advance() {
    for (;;) {
        const std::lock_guard guard(mutex_);
        const size_t before = ahead_.size();
        if (before >= readAhead_) {
            return;
        }
        ReadSome();
        if (ahead_.size() == before) {
            return;
        }
    }
}

std::string InputFeed::Problem() const {
    const std::lock_guard guard(mutex_);
    return problem_;
}

size_t InputFeed::Take(std::span<Frame> frames) {
    const std::lock_guard guard(mutex_);
    while (ahead_.size() < frames.size()) {
        const size_t before = ahead_.size();
        ReadSome();
        if (ahead_.size() == before) {
            break;
        }
    }
    const size_t count = std::min(frames.size(), ahead_.size());
    const auto end = ahead_.begin() + static_cast<std::ptrdiff_t>(count);
    std::copy(ahead_.begin(), end, frames.begin());
    ahead_.erase(ahead_.begin(), end);
    return count;
}

void InputFeed::ReadSome() {
    if (reader_.AtEnd() || !problem_.empty()) {
        return;
    }
    bytes_.resize(FramesAtOnce * Format().nBlockAlign);
    try {
        bytes_.resize(reader_.Read(bytes_));
    } catch (const CommandError& error) {
        problem_ = error.what();
        return;
    }
    std::vector<Frame> frames;
    AppendFrames(Format(), bytes_, frames);
    ahead_.insert(ahead_.end(), frames.begin(), frames.end());
}

}  // namespace kestvox
