// The simulated cards of a program that does not put up cards of its own.
#pragma once

namespace front {

class Bench;

// Puts up the cards that the environment asks for (environment.h), unless the process has a simulator
// already. False when the environment asks for what cannot be; a debugger is told why.
bool PutUpCards();

// Takes away what PutUpCards put up. The driver must have been unloaded.
void TakeAwayCards();

// Null when PutUpCards has put up none.
Bench* TheBench();

}  // namespace front
