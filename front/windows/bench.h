// The simulated cards that the environment asks for, and what is kept of a run on them: what the outputs
// played, the requests, and a line for the debugger when a stream ends.
#pragma once

#include <windows.h>

#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "front/wave_driver.h"
#include "front/windows/environment.h"
#include "simulator/simulator.h"
#include "simulator/trace/trace.h"

namespace front {

class Sleeper;
class SoundWriter;

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

    // Ends the files that are being written: at the end of the process, or before the cards are taken away.
    void Finish();

private:
    struct Run {
        std::string Name;  // "0a-2": the second of this output
        unsigned Rate = 0;
        std::unique_ptr<SoundWriter> Capture;  // null: nobody asked for it
    };

    explicit Bench(Environment environment);
    bool BeginTrace(std::string* why);
    bool PlugEverythingIn(std::string* why);
    void PlugIn(const PluggedInput& input, simulator::Connector where);
    Run BeginOutput(UINT device);
    void EndOutput(UINT device, Run& run);
    void EndInput(UINT device);
    void EndTrace();

    std::wstring CapturePath(const std::string& name) const;

    const Environment environment_;
    std::ofstream traceFile_;
    std::optional<simulator::ChromeTrace> trace_;
    simulator::Simulator cards_;
    std::mutex lock_;                // guards the rest
    std::map<UINT, Run> outputs_;    // that are open
    std::map<UINT, unsigned> runs_;  // of each output so far
    std::unique_ptr<Sleeper> sleeper_;
};

}  // namespace front
