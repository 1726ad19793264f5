// What one output channel plays, and what is heard of it at the card's connector, on the way to whoever asked
// for it. What nobody asked for is not kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "simulator/channels/frame_sink.h"
#include "simulator/channels/frame_store.h"
#include "simulator/machine/tap.h"

namespace simulator {

class AudioLog {
public:
    // From now on; an empty sink is nobody.
    void SendPlayed(FrameSink sink) { playedSink_ = std::move(sink); }
    void SendHeard(FrameSink sink);
    // And to these listeners in other processes.
    void SendHeardTo(std::vector<Tap*> taps) { taps_ = std::move(taps); }
    // For Played and Heard.
    void Keep();

    bool WantsHeard() const { return heardSink_ || !taps_.empty(); }

    void AddPlayed(std::span<const Frame> frames);

    // Adds the connector's frames from tick `from` on. The channel's own data ends after the first `withData`
    // of them; 0: it had none here. Nothing is given before the channel's first frame, and what comes after
    // its last one so far is held back until the channel has another.
    void AddHeard(uint64_t from, std::span<const Frame> frames, size_t withData);
    bool Listening() const { return listening_; }

    // The channel is given up: what is added next follows without a gap, however long that takes.
    void Pause();
    void Clear();

    std::vector<Frame> Played() const { return played_.All(); }
    std::vector<Frame> Heard() const { return heard_.All(); }

private:
    void HoldSilence(uint64_t count);
    void HoldBack(std::span<const Frame> frames);
    void Give(std::span<const Frame> frames);
    void GiveHeldBack();
    void DropHeldBack();

    FrameSink playedSink_;
    FrameSink heardSink_;
    std::vector<Tap*> taps_;
    FrameStore played_;  // what is kept
    FrameStore heard_;
    uint64_t heldSilence_ = 0;  // silent frames that are held back, before those of held_
    FrameStore held_;
    bool listening_ = false;
    uint64_t next_ = 0;  // tick that follows what was added last
};

}  // namespace simulator
