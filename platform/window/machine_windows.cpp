#include "platform/window/machine_windows.h"

#include <chrono>
#include <mutex>
#include <optional>
#include <thread>

#include "platform/machine.h"
#include "platform/text/case.h"

namespace platform {

namespace {

constexpr size_t MaximumWindows = 64;
constexpr size_t TitleLength = 128;
constexpr uint32_t MailLength = 16;
constexpr std::chrono::milliseconds AnswerPollInterval{1};

struct Record {
    ProcessIdentity Process;  // Id 0: a free place
    uint64_t Window;
    DWORD Thread;
    bool Iconic;
    WCHAR Title[TitleLength];  // cut to its room
    int Mail[MailLength];      // commands of ShowWindow
    uint32_t MailPut;          // so far; the last MailPut - MailTaken of them are in Mail
    uint32_t MailTaken;        // of them, those begun
    uint32_t MailDone;         // of those, how many have been carried out

    HWND Handle() const { return reinterpret_cast<HWND>(Window); }
};

struct Table {
    SharedMutex Lock;  // guards the rest
    Record Records[MaximumWindows];

    void Initialize() { Lock.Initialize(); }

    Record* Find(HWND window) {
        for (Record& record : Records) {
            if (record.Process.Id != 0 && record.Handle() == window && IsAlive(record.Process)) {
                return &record;
            }
        }
        return nullptr;
    }

    Record* FreePlace() {
        for (Record& record : Records) {
            if (record.Process.Id == 0 || !IsAlive(record.Process)) {
                return &record;
            }
        }
        return nullptr;
    }
};

constexpr MachineRegion<Table> TableRegion("windows");

// How many of the records are the calling thread's: those with none need not look for requests.
thread_local int ownWindows = 0;

bool IsOfCallingThread(const Record& record) {
    return record.Process.Id == CurrentProcess().Id && record.Thread == GetCurrentThreadId();
}

// Takes the oldest request to a window of the calling thread.
std::optional<int> TakeRequest(HWND* window) {
    const std::lock_guard hold(TableRegion->Lock);
    for (Record& record : TableRegion->Records) {
        if (record.MailPut != record.MailTaken && IsOfCallingThread(record)) {
            *window = record.Handle();
            return record.Mail[record.MailTaken++ % MailLength];
        }
    }
    return std::nullopt;
}

// Calls `change` for the window's record, with the lock held.
template <typename Change>
void ForRecord(HWND window, const Change& change) {
    const std::lock_guard hold(TableRegion->Lock);
    if (Record* record = TableRegion->Find(window)) {
        change(*record);
    }
}

}  // namespace

bool EnterMachineWindow(HWND window, DWORD thread) {
    const std::lock_guard hold(TableRegion->Lock);
    Record* const record = TableRegion->FreePlace();
    if (!record) {
        return false;
    }
    *record = {};
    record->Process = CurrentProcess();
    record->Window = reinterpret_cast<uint64_t>(window);
    record->Thread = thread;
    ++ownWindows;
    return true;
}

void LeaveMachineWindow(HWND window) {
    ForRecord(window, [](Record& record) {
        record.Process = {};
        --ownWindows;
    });
}

void SetMachineWindowTitle(HWND window, std::u16string_view title) {
    ForRecord(window, [title](Record& record) {
        const size_t length = title.copy(record.Title, TitleLength - 1);
        record.Title[length] = 0;
    });
}

void SetMachineWindowIconic(HWND window, bool iconic) {
    ForRecord(window, [iconic](Record& record) { record.Iconic = iconic; });
}

HWND FindMachineWindow(std::u16string_view title) {
    const std::lock_guard hold(TableRegion->Lock);
    for (const Record& record : TableRegion->Records) {
        if (record.Process.Id != 0 && CompareIgnoringCase(record.Title, title) == 0 &&
            IsAlive(record.Process)) {
            return record.Handle();
        }
    }
    return nullptr;
}

bool IsMachineWindowIconic(HWND window) {
    bool iconic = false;
    ForRecord(window, [&iconic](const Record& record) { iconic = record.Iconic; });
    return iconic;
}

bool ShowMachineWindow(HWND window, int command) {
    std::optional<uint32_t> number;  // of the request, once there is room for it
    for (;;) {
        {
            const std::lock_guard hold(TableRegion->Lock);
            Record* const record = TableRegion->Find(window);
            if (!record) {
                return false;
            }
            if (!number && record->MailPut - record->MailTaken < MailLength) {
                record->Mail[record->MailPut % MailLength] = command;
                number = ++record->MailPut;
            }
            if (number && static_cast<int32_t>(record->MailDone - *number) >= 0) {
                return true;
            }
        }
        std::this_thread::sleep_for(AnswerPollInterval);
    }
}

bool RunMachineRequests() {
    if (ownWindows == 0) {
        return false;
    }
    HWND window = nullptr;
    while (const std::optional<int> command = TakeRequest(&window)) {
        ShowWindow(window, *command);
        ForRecord(window, [](Record& record) { ++record.MailDone; });
    }
    return true;
}

}  // namespace platform
