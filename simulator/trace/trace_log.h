// The requests of this process on the way to whoever asked for them; when nobody did, they are only counted.
// It has a lock of its own, under which no other of the simulator's is taken.
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <vector>

#include "simulator/machine/host.h"
#include "simulator/trace/trace.h"

namespace simulator {

class TraceLog {
public:
    void Keep();  // for Entries, from now on
    // From now on, in place of keeping them; an empty sink is nobody. One that is taken away is given what is
    // still under way as it is.
    void Send(TraceSink sink);

    // A request begins. When WantsEntries, Begin follows, and Finish with the number that it answers.
    void Count() { count_.fetch_add(1, std::memory_order_relaxed); }
    bool WantsEntries() const { return wantsEntries_.load(std::memory_order_relaxed); }
    // Adds an entry, in the order of the requests' beginnings.
    uint64_t Begin(TraceEntry entry);
    // How a request ended: `At` is the time in microseconds.
    struct End {
        int64_t At;
        uint32_t Result;
        std::optional<Fault::Kind> Struck;
    };
    void Finish(uint64_t number, std::span<const uint8_t> output, const End& end);

    // Adds an entry that is no request, for the sink alone.
    void AddEvent(TraceEntry entry);

    uint64_t Requests() const { return count_.load(std::memory_order_relaxed); }
    std::vector<TraceEntry> Entries() const;
    void Clear();

private:
    struct Entry {
        TraceEntry What;
        bool Ended;
    };
    void GiveEnded();
    void Drop();

    std::atomic<uint64_t> count_ = 0;
    std::atomic<bool> wantsEntries_ = false;
    mutable host::Lock mutex_;
    TraceSink sink_;
    std::deque<Entry> entries_;
    uint64_t first_ = 0;  // number of entries_'s first
};

}  // namespace simulator
