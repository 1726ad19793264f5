// Holds what a program has handed over for playing against what the card played of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <vector>

#include "report/wave_summary.h"
#include "simulator/channels/frame.h"

namespace kestvox {

// The card plays buffers in their order and may leave some out, or begin one again. Where frames stop being
// those that were asked for, they are looked for at the beginnings of the buffers.
class PlayedComparison {
public:
    // With `repeats` the buffers are played again and again, as a loop. The summary outlives this.
    PlayedComparison(WaveSummary& summary, bool repeats) : summary_(summary), repeats_(repeats) {}

    // The frames of the next buffer that was handed over.
    void Ask(std::vector<simulator::Frame> frames);
    // The next frames that were played.
    void Play(std::span<const simulator::Frame> frames);
    // What is left of the buffers has been taken back. What was played so far has been given to Play.
    void TakeBack();
    // Nothing more is played. What is left of the buffers is missing, but for those of a loop.
    void Finish();

private:
    using Frames = std::vector<simulator::Frame>;

    void Compare(size_t keep);
    // Both take the next frames that were played.
    bool IsOffTrack(std::span<const simulator::Frame> coming) const;
    void FindTrack(std::span<const simulator::Frame> coming);
    void PassOverBuffer();
    void MoveOn(size_t frames);

    WaveSummary& summary_;
    const bool repeats_;
    std::deque<Frames> buffers_;  // the first is being played
    size_t at_ = 0;               // its next frame
    Frames played_;               // and not compared yet
    uint64_t position_ = 0;       // in what was asked for, and in what came without
    bool fits_ = true;            // the last frame of this buffer was the one asked for
};

}  // namespace kestvox
