#include "simulator/connectors/input_jack.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace simulator {

void InputJack::PlugIn(InputSignal signal) {
    signal_ = std::move(signal);
    begun_.reset();
}

void InputJack::Begin(uint64_t tick) {
    if (!begun_) {
        begun_ = tick;
    }
}

bool InputJack::Generate(uint64_t from, size_t count, uint32_t rate, Frame* out) const {
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

bool InputJack::GenerateRun(uint64_t from, size_t count, Frame* out) const {
    const size_t length = signal_.Frames.size();
    if (!begun_ || from + count <= *begun_ || (from > *begun_ && from - *begun_ >= length)) {
        return false;
    }
    const size_t before = from < *begun_ ? static_cast<size_t>(*begun_ - from) : 0;
    const size_t at = from > *begun_ ? static_cast<size_t>(from - *begun_) : 0;
    const size_t heard = std::min(count - before, length - at);
    std::fill_n(out, before, Frame{});
    std::copy_n(signal_.Frames.begin() + static_cast<std::ptrdiff_t>(at), heard, out + before);
    std::fill(out + before + heard, out + count, Frame{});
    return true;
}

}  // namespace simulator
