// Common controls (comctl32).
#pragma once

#include "windows.h"

#pragma GCC visibility push(default)
extern "C" {

void WINAPI InitCommonControls();

}  // extern "C"
#pragma GCC visibility pop
