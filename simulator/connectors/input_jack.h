// An input connector, and what a signal source on it sounds like frame by frame. A cable is only known
// here; what comes through it is Wiring's to say. The machine's lock guards all of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "simulator/simulator.h"

namespace simulator {

class InputJack {
public:
    void PlugIn(InputSignal signal);

    const InputSignal& Signal() const { return signal_; }
    bool IsSilent() const { return signal_.What == InputSignal::Kind::Silence; }

    // The channel records the frame at `tick`. A run begins with the first one since it was plugged in.
    void Begin(uint64_t tick);

    // The `count` frames from tick `from` on, at `rate` frames a second; false, and nothing written,
    // when they are silent. Not for cables.
    bool Generate(uint64_t from, size_t count, uint32_t rate, Frame* out) const;

private:
    bool GenerateTone(uint64_t from, size_t count, uint32_t rate, Frame* out) const;
    bool GenerateRun(uint64_t from, size_t count, Frame* out) const;

    InputSignal signal_;
    std::optional<uint64_t> begun_;  // tick of a run's first frame
};

}  // namespace simulator
