// Every request that the driver sent to the cards, for tests to assert on and for people to read, and what
// became of headers and buffers beside them.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "simulator/trace/fault.h"

namespace simulator {

struct TraceEntry {
    // In place of a request's code, what is none. A sink is given it in its place among the requests; it is
    // not kept.
    static constexpr uint32_t BufferFinished = 1;  // of the channel, or given back; the input is its cookie
    static constexpr uint32_t PowerCycled = 2;     // the card has lost its power, and got it back
    bool IsRequest() const { return Code > PowerCycled; }

    int64_t Microseconds;  // time at which the request was made
    int64_t Duration;      // microseconds that it took of the cards' time, what it stalled for included
    uint32_t Process;
    uint64_t Thread;
    uint32_t File;  // number of the open file within the process, from 1
    unsigned Card;
    uint32_t Channel;  // bound channel, 0xFFFFFFFF for none
    uint32_t Code;
    std::vector<uint8_t> Input;         // the request's input bytes
    std::vector<uint8_t> Output;        // the bytes returned (not the samples of a mapped buffer)
    uint32_t OutputLength;              // length of the caller's output buffer
    uint32_t Result;                    // system error code, 0 success
    std::optional<Fault::Kind> Struck;  // the fault that struck the request, or the buffer's completion

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
        Taken,     // the driver has it, or has had it; the call is over
        Refused,   // the driver has not taken it; the call is over
        Returned,  // is back, and the client is about to hear of it
    };
    Kind What;
    int64_t Microseconds;  // as the requests count it
    unsigned Card;
    uint32_t Channel;
    const void* Header;  // its address, which is the cookie of its buffers, too
    uint32_t Process;
    uint64_t Thread;
    uint64_t MutexWaits;  // of all threads of the process so far, for a mutex that it shares with others
};

// Is given requests in the order of their beginnings, each when it and all before it have ended. It is called
// by whichever thread ends one, under the trace's lock: it is quick, does not throw and calls nothing of the
// simulator.
using TraceSink = std::function<void(const TraceEntry&)>;

}  // namespace simulator
