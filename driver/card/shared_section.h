// Puts a variable into the data section that all processes share while they have the library loaded:
// zero when the first one loads it, gone with the last. The only code of the driver that differs by host
// system.
#pragma once

#ifdef _WIN32
#define SHARED_SECTION __attribute__((section("shared"), shared))
#else
#define SHARED_SECTION __attribute__((section("shared")))
#endif
