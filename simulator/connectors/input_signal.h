// The signals that can be plugged into an input connector.
#pragma once

#include <cstdint>
#include <vector>

#include "simulator/card/port.h"
#include "simulator/channels/frame_sink.h"

namespace simulator {

// What is plugged into an input connector.
struct InputSignal {
    enum class Kind { Silence, Tone, Run, Cable };

    Kind What = Kind::Silence;
    double Hertz = 0;       // Tone
    int32_t Amplitude = 0;  // Tone: its peak
    FrameSource Frames;     // Run
    unsigned Card = 0;      // Cable: where it comes from
    Port Output = Port::Analog;
    unsigned Rate = 0;  // digital input, not Cable: Hz of the arriving signal; 0: the card's

    static InputSignal Silence();
    // A sine, the same on both sides.
    static InputSignal Tone(double hertz, int32_t amplitude);
    // Heard once, from the first frame that the channel records after it was plugged in, and then
    // silence. It goes on with the card's clock while the channel is stopped.
    static InputSignal Run(std::vector<Frame> frames);
    static InputSignal Stream(FrameSource frames);  // a run that is not in memory
    // What leaves that output connector: at the same frame for cards on one clock, else at the same time.
    // From a digital output to a digital input it brings the sender's rate.
    static InputSignal Cable(unsigned card, Port output);

    // The same signal arriving at that rate on a digital input. It still gives one frame to each frame of
    // the card.
    InputSignal At(unsigned rate) &&;
};

}  // namespace simulator
