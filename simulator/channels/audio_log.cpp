#include "simulator/channels/audio_log.h"

namespace simulator {

void AudioLog::AddPlayed(std::span<const Frame> frames) {
    played_.Append(frames);
}

void AudioLog::AddHeard(uint64_t from, std::span<const Frame> frames, size_t withData) {
    if (listening_ && from > next_) {
        // Nothing was playing on the card.
        heard_.AppendSilence(static_cast<size_t>(from - next_));
    }
    listening_ = true;
    if (withData > 0) {
        shown_ = heard_.Size() + withData;
    }
    heard_.Append(frames);
    next_ = from + frames.size();
}

void AudioLog::Pause() {
    heard_.Shrink(shown_);
    listening_ = false;
}

void AudioLog::Clear() {
    played_.Shrink(0);
    heard_.Shrink(0);
    shown_ = 0;
    listening_ = false;
}

}  // namespace simulator
