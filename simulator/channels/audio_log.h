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

    // The connector's frames from tick `from` on. `withData` says how many of them, from the first
    // one, there are up to the end of the channel's own data (0: it had none here). Nothing is kept
    // before the channel's first frame; frames after its last are shown only once another has followed.
    void AddHeard(uint64_t from, std::span<const Frame> frames, size_t withData);
    bool Listening() const { return listening_; }

    // The channel is given up: what follows has no connection in time with what was.
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
