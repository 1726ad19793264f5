// The page about a run, on its way into a file.
#pragma once

#include <optional>
#include <string>

#include "report/run_page.h"
#include "tools/files/output_file.h"
#include "tools/machine/scene.h"
#include "tools/streams/loopback_comparison.h"
#include "tools/streams/side_work.h"
#include "tools/streams/wave_input.h"
#include "tools/streams/wave_output.h"

namespace kestvox {

// It outlives the scene.
class PageFile final : public SideWork {
public:
    // CommandError when the file cannot be made.
    explicit PageFile(const std::string& path) : file_(path) {}

    // Before the driver has come. CommandError when the cards are not simulated.
    void Begin(Scene& scene) { page_.emplace(scene.Cards()); }
    // The next request to the cards, on any thread, one at a time.
    void Take(const simulator::TraceEntry& entry) { page_->Take(entry); }

    // A stream that is open and not started.
    // What it plays, held against what it hands over; `repeats`: as a loop.
    void Watch(WaveOutput& stream, bool repeats);
    // What it records.
    void Watch(WaveInput& stream);
    // What comes back of what was played. The comparison ends before this does.
    void Watch(WaveInput& stream, LoopbackComparison& comparison);

    void Advance() override { page_->Advance(); }
    std::string Problem() const override { return file_.Problem(); }

    // The streams are closed, and the scene is still there.
    void End() { page_->End(); }
    // Writes the page.
    void Finish(const RunOutcome& outcome, const Report& report);

private:
    StreamWatch& WatchStream(const WaveStream& stream, StreamKind kind, bool compares, bool repeats);

    OutputFile file_;
    std::optional<RunPage> page_;
};

}  // namespace kestvox
