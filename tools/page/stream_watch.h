// What is kept of one stream for the page about a run.
#pragma once

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tools/machine/scene.h"
#include "tools/page/bounded_columns.h"
#include "tools/page/gap_list.h"
#include "tools/page/played_comparison.h"
#include "tools/page/wave_summary.h"
#include "tools/streams/loopback_comparison.h"
#include "tools/streams/wave_input.h"
#include "tools/streams/wave_output.h"

namespace kestvox {

class StreamWatch {
public:
    // What the stream plays, held against what it hands over; `repeats`: as a loop. The scene outlives this,
    // the stream the last Advance.
    StreamWatch(WaveOutput& stream, Scene& scene, bool repeats);
    // What it records.
    StreamWatch(WaveInput& stream, Scene& scene);
    // What comes back of what was played. The comparison ends before this does.
    StreamWatch(WaveInput& stream, Scene& scene, LoopbackComparison& comparison);
    StreamWatch(const StreamWatch&) = delete;
    StreamWatch& operator=(const StreamWatch&) = delete;

    // Takes in what has come since the last time. Whether the card has begun.
    bool Advance();
    // The stream is closed. What the pictures need is kept in at most so many columns.
    void End(size_t columns);

    // A JSON object.
    std::string Json() const;

private:
    struct InFlight {
        unsigned Least = ~0u;
        unsigned Most = 0;
        bool IsEmpty() const { return Least > Most; }
        void Merge(const InFlight& next) {
            Least = std::min(Least, next.Least);
            Most = std::max(Most, next.Most);
        }
    };

    StreamWatch(WaveStream& stream, Scene& scene, const char* kind, bool compares);
    bool LookAtCard();
    void TakePlayed();
    void AddRecorded(std::span<const char> bytes);
    void AddReturned(std::span<const char> played, std::span<const char> recorded);
    std::vector<simulator::Frame> FramesOf(std::span<const char> bytes) const;

    WaveStream& stream_;
    Scene& scene_;
    const char* kind_;
    const bool compares_;
    const unsigned device_;
    const std::string format_;
    const unsigned rate_;
    const unsigned channels_;
    const int64_t begun_;  // microseconds
    WaveSummary wave_;
    BoundedColumns<InFlight> inFlight_;  // a position is a millisecond
    GapList gaps_;
    uint64_t position_ = 0;  // frames that the summary has been given; the comparison has its own
    std::optional<PlayedComparison> comparison_;
    std::mutex mutex_;
    std::vector<simulator::Frame> waiting_;  // played, from whichever thread moved them
};

}  // namespace kestvox
