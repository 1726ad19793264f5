// The simulated cards that the environment asks for, and what is kept of a run on them: what the outputs
// played, the requests, and a line for the debugger when a stream ends.
#pragma once

#include <windows.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "front/wave_driver.h"
#include "front/windows/environment.h"
#include "simulator/simulator.h"

namespace front {

class Sleeper;

class Bench {
public:
    // Puts up the cards, plugs in what is to be plugged in and sets the faults. Null, and one line in `why`,
    // when there are not the cards that the environment speaks of.
    static std::unique_ptr<Bench> PutUp(Environment environment, std::string* why);
    ~Bench();
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;

    // A stream is open, or has been closed. `device` is its number.
    void Opened(WaveDirection direction, UINT device);
    void Closed(WaveDirection direction, UINT device);
    // Says what the refusal of a device may be due to.
    void Refused(WaveDirection direction, UINT device);

    // Writes what has not been written: at the end of the process, or before the cards are taken away.
    void Finish();

private:
    struct Run {
        size_t Begin = 0;  // in what has been heard at the connector
        unsigned Rate = 0;
    };

    explicit Bench(Environment environment);
    bool PlugEverythingIn(std::string* why);
    void PlugIn(const PluggedInput& input, simulator::Connector where);
    void EndOutput(UINT device, const Run& run);
    void EndInput(UINT device);
    void WriteTrace();

    const Environment environment_;
    simulator::Simulator cards_;
    std::mutex lock_;                // guards the rest
    std::map<UINT, Run> outputs_;    // that are open
    std::map<UINT, unsigned> runs_;  // of each output that have ended
    std::unique_ptr<Sleeper> sleeper_;
};

}  // namespace front
