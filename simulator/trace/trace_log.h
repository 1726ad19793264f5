// The trace of this process while it is being written. It has a lock of its own, under which no other is
// taken.
#pragma once

#include <cstdint>
#include <deque>
#include <span>
#include <vector>

#include "simulator/machine/host.h"
#include "simulator/trace/trace.h"

namespace simulator {

class TraceLog {
public:
    // Adds a request that begins; entries are in the order of their beginnings. Answers the number that
    // Finish takes.
    uint64_t Begin(TraceEntry entry);
    void Finish(uint64_t number, std::span<const uint8_t> output, uint32_t result);

    std::vector<TraceEntry> Entries() const;
    void Clear();

private:
    mutable host::Lock mutex_;
    std::deque<TraceEntry> entries_;
    uint64_t first_ = 0;  // number of entries_'s first
};

}  // namespace simulator
