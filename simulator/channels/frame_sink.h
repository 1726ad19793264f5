// Where frames go to and where they come from, piece by piece, when they are not kept in memory.
#pragma once

#include <cstddef>
#include <functional>
#include <span>

#include "simulator/channels/frame.h"

namespace simulator {

// Is given frames in order, each once. It is called by whichever thread moves the samples, under the
// machine's lock: it is quick, does not throw and calls nothing of the simulator.
using FrameSink = std::function<void(std::span<const Frame>)>;

// Fills `frames` with the next ones and answers how many there were; fewer only at the end. Called as a sink
// is.
using FrameSource = std::function<size_t(std::span<Frame> frames)>;

}  // namespace simulator
