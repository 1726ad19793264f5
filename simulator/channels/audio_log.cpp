#include "simulator/channels/audio_log.h"

#include <algorithm>
#include <array>
#include <utility>

#include "simulator/channels/block.h"

namespace simulator {
namespace {

bool IsSilent(std::span<const Frame> frames) {
    return std::ranges::all_of(frames, [](const Frame& frame) { return frame == Frame{}; });
}

}  // namespace

void AudioLog::SendHeard(FrameSink sink) {
    heardSink_ = std::move(sink);
    DropHeldBack();
}

void AudioLog::Keep() {
    SendPlayed([this](std::span<const Frame> frames) { played_.Append(frames); });
    SendHeard([this](std::span<const Frame> frames) { heard_.Append(frames); });
}

void AudioLog::AddPlayed(std::span<const Frame> frames) {
    if (playedSink_ && !frames.empty()) {
        playedSink_(frames);
    }
}

void AudioLog::AddHeard(uint64_t from, std::span<const Frame> frames, size_t withData) {
    if (WantsHeard()) {
        if (listening_ && from > next_) {
            HoldSilence(from - next_);  // nothing was playing on the card
        }
        if (withData > 0) {
            GiveHeldBack();
            Give(frames.first(withData));
        }
        HoldBack(frames.subspan(withData));
    }
    listening_ = true;
    next_ = from + frames.size();
}

// Silence is counted and not stored, so that an output may stay idle for as long as it likes.
void AudioLog::HoldSilence(uint64_t count) {
    if (held_.Size() == 0) {
        heldSilence_ += count;
    } else {
        held_.AppendSilence(static_cast<size_t>(count));
    }
}

void AudioLog::HoldBack(std::span<const Frame> frames) {
    if (IsSilent(frames)) {
        HoldSilence(frames.size());
    } else {
        held_.Append(frames);
    }
}

void AudioLog::Give(std::span<const Frame> frames) {
    if (heardSink_) {
        heardSink_(frames);
    }
    for (Tap* tap : taps_) {
        tap->Give(frames);
    }
}

void AudioLog::GiveHeldBack() {
    while (heldSilence_ > 0) {
        const auto count = static_cast<size_t>(std::min<uint64_t>(heldSilence_, SilentFrames.size()));
        Give(std::span(SilentFrames).first(count));
        heldSilence_ -= count;
    }
    held_.GiveTo([this](std::span<const Frame> frames) { Give(frames); });
    DropHeldBack();
}

void AudioLog::DropHeldBack() {
    heldSilence_ = 0;
    held_.Clear();
}

void AudioLog::Pause() {
    DropHeldBack();
    listening_ = false;
}

void AudioLog::Clear() {
    played_.Clear();
    heard_.Clear();
    Pause();
}

}  // namespace simulator
