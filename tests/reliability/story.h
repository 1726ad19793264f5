// Whole lives of wave devices, from the open to the close, that meet every message on their way. They go on
// whatever fails under them, and say when an answer is not the driver's to give.
#pragma once

#include <span>

#include "tests/support/driver_test.h"

// Who takes part. Two cards; stepped time.
struct Cast {
    simulator::Simulator& Cards;
    const DriverLibrary& Driver;
    WavePlayer Output;  // card 0
    WaveRecorder Input;
    WavePlayer Follower;  // card 1

    // Afterwards every header is back, and the clients heard of the open first, of the close last, and of
    // each header once.
    void ExpectBalance();
};

struct Story {
    const char* Name;
    bool Linked;  // card 1 follows card 0, and recording waits for playback
    void (*Tell)(Cast& cast);
};

// Playback, recording, and both together on linked cards.
std::span<const Story> Stories();
