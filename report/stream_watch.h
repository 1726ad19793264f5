// What is kept of one stream for the page about a run.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "report/bounded_columns.h"
#include "report/gap_list.h"
#include "report/played_comparison.h"
#include "report/wave_summary.h"
#include "simulator/simulator.h"

namespace kestvox {

// Which way a stream goes.
enum class StreamKind { Playing, Recording };

// A stream on a device, as it is announced to a StreamWatch.
struct WatchedStream {
    std::string Name;  // as the page calls it: "Device 0"
    unsigned Device;   // each card has an analog and a digital one
    StreamKind Kind;
    const WAVEFORMATEX* Format;  // with its cbSize bytes behind it; read only by the constructor
    bool Compares = true;        // there is something that what comes can be compared with
    bool Repeats = false;        // what is handed over for playing is played again and again
};

class StreamWatch {
public:
    // The stream is open and has not started. `cards` outlive this, and the constructor of a stream that
    // plays asks them for what is played.
    StreamWatch(simulator::Simulator& cards, const WatchedStream& stream);
    StreamWatch(const StreamWatch&) = delete;
    StreamWatch& operator=(const StreamWatch&) = delete;

    // Playing: these bytes are about to be handed over.
    void Ask(std::span<const char> bytes);
    // Playing: what has not been played of it is no longer asked for.
    void TakeBack();
    // Playing: what was asked for does not tell what will be played.
    void GiveUpComparison() { compares_ = false; }
    // Recording: these bytes have come.
    void AddRecorded(std::span<const char> bytes);
    // Recording: as many bytes of what was played and of what came back of it, or nothing came back.
    void AddReturned(std::span<const char> played, std::span<const char> recorded);

    // Takes in what has come since the last time, and looks at the card: before a buffer that is back is
    // handed over again, and after. Whether the card has begun.
    bool Advance();
    // The stream is closed. Nothing more comes of it, and another may take its device.
    void Close();
    // After Close: the frames that are not as they were asked for; nothing: there is nothing to compare with.
    std::optional<uint64_t> Differences() const {
        return compares_ ? std::optional(wave_.Differences()) : std::nullopt;
    }
    // Keeps what the pictures need in at most so many columns.
    void ReduceTo(size_t columns) { wave_.ReduceTo(columns); }

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
    struct CardView {
        bool Started;
        uint64_t Frames;
        uint64_t Idle;
        unsigned InFlight;
    };

    bool IsPlaying() const { return kind_ == StreamKind::Playing; }
    unsigned Card() const { return device_ / 2; }
    simulator::Port Port() const { return device_ % 2 ? simulator::Port::Digital : simulator::Port::Analog; }
    CardView ViewCard() const;
    void TakePlayed();
    std::vector<simulator::Frame> FramesOf(std::span<const char> bytes) const;

    simulator::Simulator& cards_;
    const std::string name_;
    const unsigned device_;
    const StreamKind kind_;
    const std::vector<char> formatBytes_;
    const WAVEFORMATEX& format_;
    const bool holdsAgainst_;  // what is played, against what was asked for
    bool compares_;            // ... and it tells something
    const int64_t begun_;      // microseconds
    WaveSummary wave_;
    BoundedColumns<InFlight> inFlight_;  // a position is a millisecond
    GapList gaps_;
    uint64_t position_ = 0;  // frames that the summary has been given; the comparison has its own
    PlayedComparison comparison_;
    bool closed_ = false;
    std::mutex mutex_;
    std::vector<simulator::Frame> waiting_;  // played, from whichever thread moved them
};

}  // namespace kestvox
