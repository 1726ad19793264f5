// How much a run has tried, and what it found lost: lines "tally: NAME COUNT", printed when the program ends,
// which script/test adds up over all programs of a run.
#pragma once

namespace tally {

inline constexpr const char* Faults = "faults";          // requests, calls and completions gone wrong
inline constexpr const char* Rounds = "rounds";          // of programs that die
inline constexpr const char* Operations = "operations";  // of clients, at random
inline constexpr const char* HandedIn = "headers handed in";
inline constexpr const char* Lost = "headers lost or returned twice";

void Add(const char* name, unsigned long count);

}  // namespace tally
