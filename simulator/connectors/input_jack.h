// An input connector, and what the signal source on it sounds like frame by frame. That a cable is plugged in
// is known here, too; Wiring works out what comes through it. The machine's lock guards all of it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "simulator/channels/block.h"
#include "simulator/connectors/input_signal.h"

namespace simulator {

class InputJack {
public:
    void PlugIn(InputSignal signal);

    const InputSignal& Signal() const { return signal_; }
    bool IsSilent() const { return signal_.What == InputSignal::Kind::Silence; }

    // The channel records the frame at `tick`. A run begins with the first one since it was plugged in.
    void Begin(uint64_t tick);

    // The `count` frames from tick `from` on, at `rate` frames a second; false, and nothing written,
    // when they are silent. Not for cables. At most a block, and never from before the block asked for last.
    bool Generate(uint64_t from, size_t count, uint32_t rate, Frame* out);

private:
    bool GenerateTone(uint64_t from, size_t count, uint32_t rate, Frame* out) const;
    bool GenerateRun(uint64_t from, size_t count, Frame* out);
    std::span<const Frame> FramesOfRun(uint64_t at, size_t count);
    size_t Take(uint64_t count);

    InputSignal signal_;
    std::optional<uint64_t> begun_;  // tick of a run's first frame
    uint64_t taken_ = 0;             // frames of it that its source has given
    // The part of it that was asked for last, since a block may be asked for again.
    std::array<Frame, Block::MostFrames> part_;
    std::optional<uint64_t> partAt_;
    size_t partSize_ = 0;
};

}  // namespace simulator
