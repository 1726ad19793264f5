// The simulated cards of a program that does not put up cards of its own.
#pragma once

namespace front {

// Puts up the cards that the environment asks for, unless the process has a simulator already:
// KESTVOX_CARDS (1 to 16; without it as many as the machine has, one on a new machine) and
// KESTVOX_TIME ("stepped" or "real"; without it as it is on the machine, real on a new one). False
// when the environment asks for what cannot be; a message tells why.
bool PutUpCards();

// Takes away what PutUpCards put up. The driver must have been unloaded.
void TakeAwayCards();

}  // namespace front
