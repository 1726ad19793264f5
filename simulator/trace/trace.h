// Every request that the driver sent to the cards, for tests to assert on and for people to read.
#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace simulator {

struct TraceEntry {
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
};

// Is given requests in the order of their beginnings, each when it and all before it have ended. It is called
// by whichever thread ends one, under the trace's lock: it is quick, does not throw and calls nothing of the
// simulator.
using TraceSink = std::function<void(const TraceEntry&)>;

// Chrome trace format: opens in a timeline viewer. One track per card and channel.
class ChromeTrace {
public:
    // Begins the file. `out` outlives the object.
    explicit ChromeTrace(std::ostream& out);
    void Write(const TraceEntry& entry);
    void Finish();  // nothing may be written after it

private:
    std::ostream& NextEvent();
    void NameTrack(const TraceEntry& entry);

    std::ostream& out_;
    bool first_ = true;
    std::set<std::pair<unsigned, uint32_t>> named_;  // cards and their tracks
};

}  // namespace simulator
