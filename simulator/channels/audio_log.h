// What one output channel played, and what was heard of it at the card's connector.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "simulator/channels/frame_store.h"

namespace simulator {

class AudioLog {
public:
    void AddPlayed(std::span<const Frame> frames);

    // Adds the connector's frames from tick `from` on. The channel's own data ends after the first `withData`
    // of them; 0: it had none here. Nothing is kept before the channel's first frame, and what comes after
    // its last one so far is not in Heard until the channel has another.
    void AddHeard(uint64_t from, std::span<const Frame> frames, size_t withData);
    bool Listening() const { return listening_; }

    // The channel is given up: what is added next follows without a gap, however long that takes.
    void Pause();
    void Clear();

    std::vector<Frame> Played() const { return played_.First(played_.Size()); }
    std::vector<Frame> Heard() const { return heard_.First(shown_); }

private:
    FrameStore played_;
    FrameStore heard_;
    size_t shown_ = 0;  // of heard_, up to the channel's last frame
    bool listening_ = false;
    uint64_t next_ = 0;  // tick that follows heard_
};

}  // namespace simulator
