// The entries as they come in. Locks for itself; takes no other lock.
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
    // The entry's place is that of its beginning. The answer is for Finish.
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
