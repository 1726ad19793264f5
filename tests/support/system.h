// What tests ask of the system that no Windows call tells. One implementation for each host.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <string>
#include <vector>

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
    return ComesTrue([&usage] { return Usage() == usage; });
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

// How often the driver has released a mutex.
unsigned long MutexReleases();

struct MessageBoxShown {
    HWND Owner;
    std::u16string Text;
    std::u16string Caption;  // as the system shows it when the caller gives none
    UINT Style;
};
std::vector<MessageBoxShown> MessageBoxes();

// The button that message boxes are answered with from now on; IDOK at first.
void AnswerMessageBoxes(int button);

// The calls of WinHelpW since the machine is fresh.
struct HelpRequest {
    std::u16string File;
    UINT Command;
    ULONG_PTR Data;

    bool operator==(const HelpRequest&) const = default;
};
std::vector<HelpRequest> HelpShown();
#ifdef _WIN32
void OpenHelp(bool open);  // whether they are passed on to the system from now on; each is noted either way
#endif

struct LoggedEvent {
    std::u16string Source;
    WORD Type;
    DWORD Id;
};
std::vector<LoggedEvent> EventLog();

// The n-th coming call (1 = the next) of a system function fails.
void FailCall(const char* function, unsigned nth);
bool CallFailuresAreWaiting();  // for a call that has not come yet
void ClearCallFailures();

}  // namespace test_system
