#include "tools/streams/input_feed.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "tools/command_error.h"
#include "tools/files/wave_format.h"

namespace kestvox {
namespace {

using simulator::Frame;

constexpr size_t FramesAtOnce = 4096;

size_t SampleSize(const WAVEFORMATEX& format) {
    return format.nChannels ? size_t{format.nBlockAlign} / format.nChannels : 0;
}

// Of fewer bytes than four: at the top. 8 bits are unsigned.
int32_t WholeSample(const char* bytes, size_t size) {
    uint32_t slot = 0;
    std::memcpy(reinterpret_cast<char*>(&slot) + sizeof slot - size, bytes, size);
    return static_cast<int32_t>(size == 1 ? slot ^ 0x80000000 : slot);
}

template <typename Float>
int32_t FloatSample(const char* bytes) {
    Float value;
    std::memcpy(&value, bytes, sizeof value);
    constexpr double FullScale = 2147483648.0;
    const double scaled = std::isnan(value) ? 0 : std::nearbyint(static_cast<double>(value) * FullScale);
    return static_cast<int32_t>(std::clamp(scaled, -FullScale, FullScale - 1));
}

int32_t SampleAt(const WAVEFORMATEX& format, const char* bytes) {
    const size_t size = SampleSize(format);
    if (!IsFloat(format)) {
        return WholeSample(bytes, size);
    }
    return size == sizeof(float) ? FloatSample<float>(bytes) : FloatSample<double>(bytes);
}

bool CanBePluggedIn(const WAVEFORMATEX& format) {
    const size_t size = SampleSize(format);
    const bool isKnown = IsFloat(format) ? size == sizeof(float) || size == sizeof(double)
                                         : IsWhole(format) && size >= 1 && size <= 4;
    return isKnown && format.nChannels <= 2;
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
    const size_t frameSize = Format().nBlockAlign;
    bytes_.resize(FramesAtOnce * frameSize);
    try {
        bytes_.resize(reader_.Read(bytes_));
    } catch (const CommandError& error) {
        problem_ = error.what();
        return;
    }
    for (size_t at = 0; at < bytes_.size(); at += frameSize) {
        ahead_.push_back({SampleAt(Format(), &bytes_[at]),
                          SampleAt(Format(), &bytes_[at + frameSize - SampleSize(Format())])});
    }
}

}  // namespace kestvox
