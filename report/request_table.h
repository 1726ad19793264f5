// How often each kind of request was made of the cards, and how long the requests took.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "simulator/trace/trace.h"

namespace kestvox {

class RequestTable {
public:
    void Take(const simulator::TraceEntry& entry);

    // A JSON list, an object for each name: "name", "count", "failed", "total" and "longest" in microseconds.
    std::string Json() const;

private:
    struct Row {
        uint64_t Count = 0;
        uint64_t Failed = 0;
        int64_t Total = 0;
        int64_t Longest = 0;
    };
    std::map<uint32_t, Row> rows_;  // by code
};

}  // namespace kestvox
