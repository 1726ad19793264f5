// Whole lives of wave devices, from the open to the close, that meet every message on their way. They go on
// whatever fails under them, and say when an answer is not the driver's to give.
#pragma once

#include <span>

#include "simulator/simulator.h"
#include "tests/reliability/client.h"
#include "tests/support/driver_library.h"

// Who takes part. Two cards; stepped time.
struct Cast {
    simulator::Simulator& Cards;
    const DriverLibrary& Driver;
    Player Output;  // card 0
    Recorder Input;
    Player Follower;  // card 1

    void ExpectBalance() {
        Output.ExpectBalance();
        Input.ExpectBalance();
        Follower.ExpectBalance();
    }
};

struct Story {
    const char* Name;
    bool Linked;  // card 1 follows card 0, and recording waits for playback
    void (*Tell)(Cast& cast);
};

// Playback, recording, and both together on linked cards.
std::span<const Story> Stories();
