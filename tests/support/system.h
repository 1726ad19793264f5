// What tests ask of the system that no Windows call tells. One implementation for each host; what the layer
// in place of Windows tells of itself, system_windows.cpp tells of Windows.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <gtest/gtest.h>

#include <string>

#include "platform/inspect.h"
#include "tests/support/wait.h"

namespace test_system {

// Joins a machine of nobody else's: empty registry and event log, no named objects, no cards, no message
// box shown yet. The driver is unloaded: what it has taken is of the machine before.
void FreshMachine();

// The driver library itself, loaded as a program would load it. FreeLibrary gives it back.
HMODULE LoadDriver();

// What the process has taken and not given back, in words; equal before and after when nothing leaked.
std::string Usage();

// Whether it comes to that: a thread that has left the driver ends a moment later.
inline bool UsageComesTo(const std::string& usage) {
    return ComesTrue([&usage] { return Usage() == usage; }, std::chrono::seconds(10));
}
inline void ExpectUsage(const std::string& usage) {
    EXPECT_TRUE(UsageComesTo(usage)) << Usage() << " instead of " << usage;
}

// A page of memory that can be touched until it is given back, and not after.
void* TakePage();
void GiveBackPage(void* page);

// A prepared header on such a page, with so many bytes of data behind it.
inline WAVEHDR* TakeHeader(DWORD bytes) {
    auto* header = static_cast<WAVEHDR*>(TakePage());
    *header = {};
    header->lpData = reinterpret_cast<LPSTR>(header + 1);
    header->dwBufferLength = bytes;
    header->dwFlags = WHDR_PREPARED;
    return header;
}

using platform::AnswerMessageBoxes;
using platform::CallFailuresAreWaiting;
using platform::ClearCallFailures;
using platform::EventLog;
using platform::FailCall;
using platform::HelpRequests;
using platform::MessageBoxes;
using platform::MutexReleases;
#ifdef _WIN32
void OpenHelp(bool open);  // whether requests go on to the system from now on; each is noted either way
#endif

}  // namespace test_system
