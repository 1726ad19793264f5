// How much a test has tried: lines "tally: NAME COUNT", which script/test adds up over all programs of a run.
#pragma once

#include <cstdio>

namespace tally {

inline constexpr const char* Faults = "faults";          // requests, calls and completions gone wrong
inline constexpr const char* Rounds = "rounds";          // of programs that die
inline constexpr const char* Operations = "operations";  // of clients, at random

inline void Add(const char* name, unsigned long count) {
    std::printf("tally: %s %lu\n", name, count);
}

}  // namespace tally
