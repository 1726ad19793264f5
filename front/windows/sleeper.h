// Lets the computer sleep and wake once, when the first stream has come that far.
#pragma once

#include <windows.h>

#include <atomic>

#include "front/wave_driver.h"
#include "simulator/simulator.h"

namespace front {

class Sleeper {
public:
    // `cards` outlives the object.
    Sleeper(simulator::Simulator& cards, double seconds) : cards_(cards), seconds_(seconds) {}
    ~Sleeper();
    Sleeper(const Sleeper&) = delete;
    Sleeper& operator=(const Sleeper&) = delete;

    // The stream on that connector has been opened. Only the first one is watched.
    void Watch(WaveDirection direction, unsigned card, simulator::Port port);

private:
    static DWORD WINAPI Run(LPVOID sleeper);
    uint64_t FramesDone() const;
    void SleepAndWake();

    simulator::Simulator& cards_;
    const double seconds_;
    WaveDirection direction_ = WaveDirection::Out;
    unsigned card_ = 0;
    simulator::Port port_ = simulator::Port::Analog;
    std::atomic<bool> ends_{false};
    HANDLE thread_ = nullptr;
};

}  // namespace front
