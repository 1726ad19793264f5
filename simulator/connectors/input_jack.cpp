#include "simulator/connectors/input_jack.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace simulator {

void InputJack::PlugIn(InputSignal signal) {
    signal_ = std::move(signal);
    begun_.reset();
    taken_ = 0;
    partAt_.reset();
}

void InputJack::Begin(uint64_t tick) {
    if (!begun_) {
        begun_ = tick;
    }
}

bool InputJack::Generate(uint64_t from, size_t count, uint32_t rate, Frame* out) {
    switch (signal_.What) {
    case InputSignal::Kind::Tone:
        return rate != 0 && GenerateTone(from, count, rate, out);
    case InputSignal::Kind::Run:
        return GenerateRun(from, count, out);
    default:
        return false;
    }
}

bool InputJack::GenerateTone(uint64_t from, size_t count, uint32_t rate, Frame* out) const {
    // The remainder is exact, however long the tone has lasted.
    const double cycles = std::fmod(signal_.Hertz * static_cast<double>(from), rate) / rate;
    const double step = signal_.Hertz / rate;
    for (size_t i = 0; i < count; ++i) {
        const double phase = 2 * std::numbers::pi * (cycles + step * static_cast<double>(i));
        const auto value = static_cast<int32_t>(std::lround(signal_.Amplitude * std::sin(phase)));
        out[i] = {value, value};
    }
    return true;
}

bool InputJack::GenerateRun(uint64_t from, size_t count, Frame* out) {
    if (!begun_ || from + count <= *begun_) {
        return false;
    }
    const size_t before = from < *begun_ ? static_cast<size_t>(*begun_ - from) : 0;
    const std::span<const Frame> heard = FramesOfRun(from + before - *begun_, count - before);
    if (heard.empty()) {
        return false;
    }
    std::fill_n(out, before, Frame{});
    std::ranges::copy(heard, out + before);
    std::fill(out + before + heard.size(), out + count, Frame{});
    return true;
}

// What passed while nobody asked is taken from the source and dropped.
std::span<const Frame> InputJack::FramesOfRun(uint64_t at, size_t count) {
    if (partAt_ != at) {
        while (taken_ < at && Take(std::min<uint64_t>(at - taken_, part_.size())) > 0) {
        }
        Take(count);
        partAt_ = at;
    }
    return {part_.data(), partSize_};
}

size_t InputJack::Take(uint64_t count) {
    partSize_ = signal_.Frames({part_.data(), static_cast<size_t>(count)});
    taken_ += partSize_;
    return partSize_;
}

}  // namespace simulator
