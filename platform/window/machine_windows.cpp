#include "platform/window/machine_windows.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

#include "platform/machine.h"
#include "platform/text/case.h"

namespace platform {

namespace {

constexpr size_t MaximumWindows = 64;
constexpr size_t TitleLength = 128;
constexpr size_t ClassLength = 64;
constexpr uint32_t MailLength = 16;
constexpr std::chrono::milliseconds AnswerPollInterval{1};

// A text cut to its room.
template <size_t Length>
struct FixedText {
    WCHAR Letters[Length];

    void Set(std::u16string_view text) {
        const std::u16string_view cut = text.substr(0, Length - 1);
        cut.copy(Letters, cut.size());
        Letters[cut.size()] = 0;
    }
    std::u16string_view View() const { return Letters; }
};

struct Record {
    ProcessIdentity Process;  // Id 0: a free place
    uint64_t Window;
    DWORD Thread;
    uint64_t Order;  // the greater the further in front
    bool TopMost;
    MachineWindowState State;
    FixedText<TitleLength> Title;
    FixedText<ClassLength> ClassName;
    WindowRequest Mail[MailLength];
    uint32_t MailPut;    // requests so far; the last MailPut - MailTaken of them are in Mail
    uint32_t MailTaken;  // of them, those begun
    uint32_t MailDone;   // of those, how many have been carried out

    HWND Handle() const { return reinterpret_cast<HWND>(Window); }
};

struct Table {
    SharedMutex Lock;  // guards the rest
    uint64_t FrontOrder;
    uint64_t BackOrder;
    Record Records[MaximumWindows];

    void Initialize() {
        Lock.Initialize();
        FrontOrder = BackOrder = UINT64_MAX / 2;
    }

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

    template <typename Predicate>
    Record* Front(const Predicate& wanted) {
        Record* front = nullptr;
        for (Record& record : Records) {
            const bool further =
                !front || std::pair(record.TopMost, record.Order) > std::pair(front->TopMost, front->Order);
            if (record.Process.Id != 0 && further && wanted(record) && IsAlive(record.Process)) {
                front = &record;
            }
        }
        return front;
    }
};

constexpr MachineRegion<Table> TableRegion("windows");

// How many of the records are the calling thread's: those with none need not look for requests.
thread_local int ownWindows = 0;

bool IsOfCallingThread(const Record& record) {
    return record.Process.Id == CurrentProcess().Id && record.Thread == GetCurrentThreadId();
}

// Takes the oldest request to a window of the calling thread.
std::optional<WindowRequest> TakeRequest(HWND* window) {
    const std::lock_guard hold(TableRegion->Lock);
    for (Record& record : TableRegion->Records) {
        if (record.MailPut != record.MailTaken && IsOfCallingThread(record)) {
            *window = record.Handle();
            return record.Mail[record.MailTaken++ % MailLength];
        }
    }
    return std::nullopt;
}

void NoteDone(HWND window) {
    const std::lock_guard hold(TableRegion->Lock);
    if (Record* record = TableRegion->Find(window)) {
        ++record->MailDone;
    }
}

void CarryOut(HWND window, const WindowRequest& request) {
    switch (request.What) {
    case WindowRequest::Kind::Post:
        PostMessageW(window, request.Message, static_cast<WPARAM>(request.First),
                     static_cast<LPARAM>(request.Second));
        break;
    case WindowRequest::Kind::Show:
        ShowWindow(window, static_cast<int>(request.First));
        break;
    case WindowRequest::Kind::Place:
        SetWindowPos(window, reinterpret_cast<HWND>(request.First), request.Place[0], request.Place[1],
                     request.Place[2], request.Place[3], request.PlaceFlags);
        break;
    }
}

}  // namespace

bool EnterMachineWindow(HWND window, DWORD thread, std::u16string_view className, std::u16string_view title) {
    const std::lock_guard hold(TableRegion->Lock);
    Record* const record = TableRegion->FreePlace();
    if (!record) {
        return false;
    }
    record->Process = CurrentProcess();
    record->Window = reinterpret_cast<uint64_t>(window);
    record->Thread = thread;
    record->Order = ++TableRegion->FrontOrder;
    record->TopMost = false;
    record->State = {};
    record->Title.Set(title);
    record->ClassName.Set(className);
    record->MailPut = record->MailTaken = record->MailDone = 0;
    ++ownWindows;
    return true;
}

void LeaveMachineWindow(HWND window) {
    const std::lock_guard hold(TableRegion->Lock);
    if (Record* record = TableRegion->Find(window)) {
        record->Process = {};
        --ownWindows;
    }
}

void SetMachineWindowTitle(HWND window, std::u16string_view title) {
    const std::lock_guard hold(TableRegion->Lock);
    if (Record* record = TableRegion->Find(window)) {
        record->Title.Set(title);
    }
}

void SetMachineWindowState(HWND window, const MachineWindowState& state) {
    const std::lock_guard hold(TableRegion->Lock);
    if (Record* record = TableRegion->Find(window)) {
        record->State = state;
    }
}

void OrderMachineWindow(HWND window, HWND after) {
    const std::lock_guard hold(TableRegion->Lock);
    Record* const record = TableRegion->Find(window);
    if (!record) {
        return;
    }
    if (after == HWND_BOTTOM) {
        record->TopMost = false;
        record->Order = --TableRegion->BackOrder;
    } else if (after == HWND_TOP || after == HWND_TOPMOST || after == HWND_NOTOPMOST) {
        record->TopMost = after == HWND_TOPMOST || (record->TopMost && after == HWND_TOP);
        record->Order = ++TableRegion->FrontOrder;
    }
}

HWND FrontMachineWindow() {
    const std::lock_guard hold(TableRegion->Lock);
    const Record* const front = TableRegion->Front([](const Record& record) { return record.State.Visible; });
    return front ? front->Handle() : nullptr;
}

HWND FindMachineWindow(std::optional<std::u16string_view> className,
                       std::optional<std::u16string_view> title) {
    const std::lock_guard hold(TableRegion->Lock);
    const Record* const found = TableRegion->Front([&](const Record& record) {
        return (!className || CompareIgnoringCase(record.ClassName.View(), *className) == 0) &&
               (!title || CompareIgnoringCase(record.Title.View(), *title) == 0);
    });
    return found ? found->Handle() : nullptr;
}

std::optional<MachineWindowState> FindMachineWindowState(HWND window) {
    const std::lock_guard hold(TableRegion->Lock);
    const Record* const record = TableRegion->Find(window);
    return record ? std::optional(record->State) : std::nullopt;
}

bool AskMachineWindow(HWND window, const WindowRequest& request) {
    std::optional<uint32_t> number;  // of the request, once there is room for it
    for (;;) {
        {
            const std::lock_guard hold(TableRegion->Lock);
            Record* const record = TableRegion->Find(window);
            if (!record) {
                return false;
            }
            if (!number && record->MailPut - record->MailTaken < MailLength) {
                record->Mail[record->MailPut % MailLength] = request;
                number = ++record->MailPut;
            }
            const bool done = number && static_cast<int32_t>(record->MailDone - *number) >= 0;
            if (done || (number && request.What == WindowRequest::Kind::Post)) {
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
    while (const std::optional<WindowRequest> request = TakeRequest(&window)) {
        CarryOut(window, *request);
        NoteDone(window);
    }
    return true;
}

}  // namespace platform
