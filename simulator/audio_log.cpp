#include "simulator/audio_log.h"

namespace simulator {

void AudioLog::AddPlayed(std::span<const Frame> frames) {
    played_.insert(played_.end(), frames.begin(), frames.end());
}

void AudioLog::AddHeard(uint64_t from, std::span<const Frame> frames, size_t withData) {
    if (listening_ && from > next_) {
        // Nothing was playing on the card.
        heard_.resize(heard_.size() + static_cast<size_t>(from - next_));
    }
    listening_ = true;
    const size_t before = heard_.size();
    heard_.insert(heard_.end(), frames.begin(), frames.end());
    if (withData > 0) {
        shown_ = before + withData;
    }
    next_ = from + frames.size();
}

void AudioLog::Pause() {
    heard_.resize(shown_);
    listening_ = false;
}

void AudioLog::Clear() {
    played_.clear();
    heard_.clear();
    shown_ = 0;
    listening_ = false;
}

std::vector<Frame> AudioLog::Heard() const {
    return {heard_.begin(), heard_.begin() + static_cast<std::ptrdiff_t>(shown_)};
}

}  // namespace simulator
