// Telling a client: what drivers call, and what the front calls in a driver's place. Not every Windows header
// set declares it.
#pragma once

#include <windows.h>
#include <mmsystem.h>

extern "C" BOOL WINAPI DriverCallback(DWORD_PTR target, DWORD flags, HDRVR device, DWORD message,
                                      DWORD_PTR user, DWORD_PTR first, DWORD_PTR second);
