// The simulated cards that the environment asks for, and what is kept of a run on them: what the outputs
// played, the requests, a page about it all, and a line for the debugger when a stream ends.
#pragma once

#include <windows.h>

#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "front/host.h"
#include "front/wave_driver.h"
#include "front/windows/environment.h"
#include "simulator/simulator.h"
#include "simulator/trace/chrome_trace.h"
#include "simulator/trace/trace.h"

namespace front {

class BenchPage;
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

    // A stream is open, or has been closed. `device` is its number, `format` what the driver has got.
    void Opened(WaveDirection direction, UINT device, const WAVEFORMATEX& format);
    void Closed(WaveDirection direction, UINT device);
    // Says what the refusal of a device may be due to.
    void Refused(WaveDirection direction, UINT device);

    // Whether what becomes of headers is kept; if so, this is told of it.
    bool WatchesHeaders() const { return page_ || trace_; }
    void Header(host::HeaderEvent event, WaveDirection direction, UINT device, const WAVEHDR* header);
    void Reset(WaveDirection direction, UINT device);

    // Ends the files that are being written: at the end of the process, or before the cards are taken away.
    void Finish();

private:
    struct Run {
        std::string Name;  // "0a-2": the second of this output, or of this input
        unsigned Rate = 0;
        std::unique_ptr<SoundWriter> Capture;  // null: nobody asked for it
    };

    explicit Bench(Environment environment);
    bool BeginTrace(std::string* why);
    bool BeginPage(std::string* why);
    void SendRequests();
    bool PlugEverythingIn(std::string* why);
    void PlugIn(const PluggedInput& input, simulator::Connector where);
    Run Begin(WaveDirection direction, UINT device);
    void BeginCapture(Run& run, UINT device);
    void End(WaveDirection direction, UINT device, Run& run);
    void EndOutput(UINT device, Run& run);
    void EndInput(UINT device, const Run& run);
    void TraceHeader(host::HeaderEvent event, WaveDirection direction, UINT device, const WAVEHDR* header);
    void EndTrace();
    void EndPage();

    std::wstring CapturePath(const std::string& name) const;

    const Environment environment_;
    std::ofstream traceFile_;
    std::optional<simulator::ChromeTrace> trace_;
    simulator::Simulator cards_;
    std::mutex traceLock_;             // guards the trace; nothing is asked of the cards under it
    std::unique_ptr<BenchPage> page_;  // null: nobody asked for it
    std::mutex lock_;                  // guards the rest, and the page but for its requests
    using Key = std::pair<WaveDirection, UINT>;
    std::map<Key, Run> open_;
    std::map<Key, unsigned> runs_;  // of each output and input so far
    std::unique_ptr<Sleeper> sleeper_;
};

}  // namespace front
