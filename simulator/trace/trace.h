// Every request that the driver sent to the cards, for tests to assert on and for people to read, and what
// became of headers and buffers beside them.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <iosfwd>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace simulator {

struct TraceEntry {
    // In place of a request's code: the card has finished a buffer of the channel, or has given it back. The
    // input is its cookie. A sink is given it in its place among the requests; it is not kept.
    static constexpr uint32_t BufferFinished = 1;

    int64_t Microseconds;  // time at which the request was made
    int64_t Duration;      // microseconds that it took of the cards' time, what it stalled for included
    uint32_t Process;
    uint64_t Thread;
    uint32_t File;  // number of the open file within the process, from 1
    unsigned Card;
    uint32_t Channel;  // bound channel, 0xFFFFFFFF for none
    uint32_t Code;
    std::vector<uint8_t> Input;   // the request's input bytes
    std::vector<uint8_t> Output;  // the bytes returned (not the samples of a mapped buffer)
    uint32_t OutputLength;        // length of the caller's output buffer
    uint32_t Result;              // system error code, 0 success

    // Short readable forms, one line each, as tests compare them, for example
    // "write card 17 = 01 / 01", "write port 0 = C0 / C0", "read card 32", "stall 227",
    // "QUEUE_BUFFER 0", "MAP_BUFFER 4096" (its length), "BIND_HANDLE 0 2", "BIND_HANDLE 0 control",
    // "READ_NVRAM_PAGE FF80", "READ_PCI_CONFIG 10 4" (offset, length). Addresses (cookie, routine,
    // data) are left out, so "SET_COMPLETION_ROUTINE" sets one and "SET_COMPLETION_ROUTINE 0" takes
    // it away. The result is not part of the text.
    std::string Text() const;

    // What a register write says to the card, as DescribeWrite has it; empty for other requests.
    std::string Meaning() const;
};

// A header of a client on its way to the driver and back.
struct HeaderEvent {
    enum class Kind {
        Queued,    // is about to be handed to the driver
        Refused,   // the driver has not taken it
        Returned,  // is back, and the client is about to hear of it
    };
    Kind What;
    int64_t Microseconds;  // as the requests count it
    unsigned Card;
    uint32_t Channel;
    const void* Header;  // its address, which is the cookie of its buffers, too
};

// Is given requests in the order of their beginnings, each when it and all before it have ended. It is called
// by whichever thread ends one, under the trace's lock: it is quick, does not throw and calls nothing of the
// simulator.
using TraceSink = std::function<void(const TraceEntry&)>;

// Chrome trace format: opens in a timeline viewer. One track for each card and channel has the requests. One
// bar for each header, numbered from 1 on its channel, lasts from the call that brings it to the callback; in
// it are the requests that hand its buffer over, and its time in the card. Where a channel that runs had no
// buffer, and then got another, a mark says that it ran dry.
class ChromeTrace {
public:
    // Begins the file. `out` outlives the object.
    explicit ChromeTrace(std::ostream& out);
    void Write(const TraceEntry& entry);
    void Write(const HeaderEvent& event);
    void Finish();  // nothing may be written after it

private:
    using Track = std::pair<unsigned, uint32_t>;  // card and channel
    // What a channel has of headers and buffers. A header may be handed over again before we hear that it is
    // back, and be in the card several times, as a loop.
    struct ChannelState {
        uint64_t Headers = 0;  // so far
        std::map<uintptr_t, std::deque<uint64_t>> Out;
        std::map<uintptr_t, std::deque<uint64_t>> InCard;
        bool Runs = false;                // is armed
        std::optional<int64_t> DrySince;  // while it runs: the last buffer came to its end
    };

    std::ostream& NextEvent();
    void NameTrack(Track track);
    void WriteRequest(const TraceEntry& entry);
    void FollowHandOver(const TraceEntry& entry);
    void FollowRun(const TraceEntry& entry);
    void BeginInCard(Track track, uintptr_t cookie, uint64_t header, int64_t time);
    void EndInCard(const TraceEntry& entry);
    void WriteBar(char phase, Track track, uint64_t header, const std::string& name, int64_t time);
    void WriteCounter(Track track, int64_t time);

    std::ostream& out_;
    bool first_ = true;
    std::set<Track> named_;
    std::map<Track, ChannelState> channels_;
    // Of each file of each process: the requests since the last buffer was begun.
    std::map<std::pair<uint32_t, uint32_t>, std::vector<TraceEntry>> handOvers_;
};

}  // namespace simulator
