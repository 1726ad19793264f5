// The clock tree and the settings behind it.
#pragma once

#include <windows.h>

namespace kestvox {

// Puts every card into the tree by its saved master, and the clock source that goes with its place into its
// working settings. Disables the tree when there is no card. Tells the user when there are several masters.
void FillClockTree(HWND page);

// Saves every card's master and clock source as the tree has them. When the user regrouped no card, those
// that another sheet or program has saved otherwise meanwhile stay so, and the tree shows them. FALSE, and
// nothing is saved, when there are several masters, of which the user is told.
BOOL ApplyClockTree(HWND page);

// Every card's working clock source as it is saved.
void RestoreClockSources();

}  // namespace kestvox
