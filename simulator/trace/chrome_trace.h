// Requests, headers and buffers as a picture for a timeline viewer.
#pragma once

#include <cstdint>
#include <deque>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/trace/timeline_file.h"
#include "simulator/trace/trace.h"

namespace simulator {

// A card is a group of tracks, one for each channel and one for the control file:
// - spans are the requests, as long as they took, with what a register write means;
// - one bar for each header, numbered from 1 on its channel, lasts from the call that brings it to the
//   callback; in it are the requests that hand its buffer over, and its time in the card;
// - a counter tells how many headers the driver has, and how many are in the card;
// - marks say where a channel that runs had no buffer and then got another, where a fault struck, and
//   where the card lost its power; from there it is asleep until the driver's next request to it.
// A program is a group with a track for each of its threads: the call that brings a header, the hand-over to
// the card and the callback are spans there, and an arrow leads from one to the next. A counter has the waits
// for mutexes.
class ChromeTrace {
public:
    // Begins the file. `out` outlives the object.
    explicit ChromeTrace(std::ostream& out) : file_(out) {}
    void Write(const TraceEntry& entry);
    void Write(const HeaderEvent& event);
    void Finish() { file_.Finish(); }  // nothing may be written after it

private:
    using Track = TimelineFile::Track;
    // What a channel has of headers and buffers. A header may be handed over again before we hear that it is
    // back, and be in the card several times, as a loop.
    struct ChannelState {
        uint64_t Headers = 0;  // so far
        std::map<uintptr_t, std::deque<uint64_t>> Out;
        std::map<uintptr_t, std::deque<uint64_t>> InCard;
        bool Runs = false;                // is armed
        std::optional<int64_t> DrySince;  // while it runs: the last buffer came to its end
    };

    Track CardTrack(unsigned card, uint32_t channel);
    Track ThreadTrack(uint32_t process, uint64_t thread);
    void EndSleep(const TraceEntry& entry);
    void WriteRequest(Track track, const TraceEntry& entry);
    void FollowHandOver(Track track, const TraceEntry& entry);
    void WriteHandOver(Track track, uint64_t header, const std::vector<TraceEntry>& requests);
    void FollowRun(Track track, const TraceEntry& entry);
    void BeginInCard(Track track, uintptr_t cookie, uint64_t header, int64_t time);
    void EndInCard(Track track, const TraceEntry& entry);
    void BeginHeader(Track track, Track thread, const HeaderEvent& event);
    uint64_t EndHeader(Track track, const HeaderEvent& event);  // its number; 0: it is not known
    void WriteCounter(Track track, int64_t time);
    void WriteMutexWaits(const HeaderEvent& event);

    TimelineFile file_;
    std::map<Track, ChannelState> channels_;
    std::map<unsigned, int64_t> asleepSince_;  // of each card that has lost its power
    std::map<uint32_t, uint64_t> mutexWaits_;  // of each program, as last written
    // Of each file of each process: the requests since the last buffer was begun.
    std::map<std::pair<uint32_t, uint32_t>, std::vector<TraceEntry>> handOvers_;
};

}  // namespace simulator
