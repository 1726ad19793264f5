// What tests and tools may ask of the platform layer that no Windows call tells: what was shown, logged and
// left open, and which calls shall fail.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace platform {

// What this process has taken and not given back. Two equal snapshots around a piece of work show
// that it leaked nothing.
struct Usage {
    int Handles;       // open handles of every kind, registry keys and event sources included
    int Threads;       // threads made with CreateThread that have not ended
    int GlobalBlocks;  // GlobalAlloc blocks
    int HeapBlocks;    // HeapAlloc blocks
    int HeldMutexes;   // mutexes that a thread of this process holds
    int Windows;       // windows that have not been destroyed
    int UserObjects;   // menus, cursors, bitmaps, image lists, property pages
    bool operator==(const Usage&) const = default;
};
Usage CurrentUsage();

// How often this process has released a mutex.
unsigned long MutexReleases();
// How often a thread of this process has found a named mutex taken, and waited.
unsigned long NamedMutexWaits();

// Message boxes are not shown but recorded, and answered with the given button (IDOK at first).
struct MessageBoxRecord {
    HWND Owner;
    std::u16string Text;
    std::u16string Caption;  // "Error" when the caller gave none
    UINT Style;
};
std::vector<MessageBoxRecord> MessageBoxes();
void ClearMessageBoxes();
void AnswerMessageBoxes(int button);

// Help is not shown but recorded, oldest first.
struct HelpRequest {
    HWND Window;
    std::u16string File;
    UINT Command;  // HELP_
    ULONG_PTR Data;
};
std::vector<HelpRequest> HelpRequests();
void ClearHelpRequests();

// The machine's event log, oldest first.
struct EventRecord {
    std::u16string Source;
    WORD Type;
    WORD Category;
    DWORD Id;
};
std::vector<EventRecord> EventLog();

// Makes the n-th coming call (1 = the next) of the named function fail as that function fails:
// "CreateEventW", "CreateThread", "CreateMutexW", "CreateFileW", "HeapAlloc", "GlobalAlloc",
// "GlobalReAlloc", "GlobalLock", "RegisterEventSourceW", "RegOpenKeyExW", "RegCreateKeyW",
// "RegQueryValueExW", "RegSetValueExW", "QueueUserAPC", "TlsAlloc", "WaitForSingleObjectEx".
// ClearCallFailures forgets all.
void FailCall(const char* function, unsigned nth);
bool CallFailuresAreWaiting();  // for a call that has not come yet
void ClearCallFailures();

}  // namespace platform
