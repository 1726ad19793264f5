#include "simulator/connectors/input_signal.h"

#include <algorithm>
#include <utility>

namespace simulator {

InputSignal InputSignal::Silence() {
    return {};
}

InputSignal InputSignal::Tone(double hertz, int32_t amplitude) {
    InputSignal signal;
    signal.What = Kind::Tone;
    signal.Hertz = hertz;
    signal.Amplitude = amplitude;
    return signal;
}

InputSignal InputSignal::Run(std::vector<Frame> frames) {
    return Stream([frames = std::move(frames), at = size_t{0}](std::span<Frame> out) mutable {
        const size_t count = std::min(out.size(), frames.size() - at);
        std::copy_n(frames.begin() + static_cast<std::ptrdiff_t>(at), count, out.begin());
        at += count;
        return count;
    });
}

InputSignal InputSignal::Stream(FrameSource frames) {
    InputSignal signal;
    signal.What = Kind::Run;
    signal.Frames = std::move(frames);
    return signal;
}

InputSignal InputSignal::Cable(unsigned card, Port output) {
    InputSignal signal;
    signal.What = Kind::Cable;
    signal.Card = card;
    signal.Output = output;
    return signal;
}

InputSignal InputSignal::At(unsigned rate) && {
    Rate = rate;
    return std::move(*this);
}

}  // namespace simulator
