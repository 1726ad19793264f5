#include "simulator/windows/redirected_calls.h"

#include <commctrl.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <string_view>
#include <vector>

#include "simulator/attach.h"
#include "simulator/machine/host.h"
#include "simulator/windows/device_files.h"
#include "simulator/windows/holdings.h"
#include "simulator/windows/mutex_waits.h"
#include "simulator/windows/procedure_calls.h"

namespace simulator {
namespace {

std::atomic<host::Timer*> installedTimer{nullptr};

void WINAPI SleepOnTimer(DWORD milliseconds) {
    if (host::Timer* timer = installedTimer) {
        timer->Sleep(milliseconds);
    } else {
        Sleep(milliseconds);
    }
}

DWORD WINAPI ReadTimer() {
    return TimerMilliseconds();
}

// --- calls that fail on demand ----------------------------------------------------------------------

// How many calls of a function are left until each of its failures.
class Countdown {
public:
    bool Strike() {
        if (!armed_) {
            return false;
        }
        const std::lock_guard guard(lock_);
        const size_t due = std::erase_if(left_, [](unsigned& left) { return --left == 0; });
        armed_ = !left_.empty();
        return due != 0;
    }
    void Add(unsigned nth) {
        const std::lock_guard guard(lock_);
        left_.push_back(nth);
        armed_ = true;
    }
    bool IsArmed() const { return armed_; }
    void Clear() {
        const std::lock_guard guard(lock_);
        left_.clear();
        armed_ = false;
    }

private:
    std::atomic<bool> armed_{false};
    host::Lock lock_;
    std::vector<unsigned> left_;
};

// One function that can fail; `Number` tells those of one signature apart.
template <unsigned Number, typename Result, typename... Arguments>
struct Failable {
    static inline Result(WINAPI* real)(Arguments...);
    static inline Result failure;
    static inline DWORD lastError;
    static inline Countdown countdown;

    static Result WINAPI Call(Arguments... arguments) {
        if (countdown.Strike()) {
            if (lastError != ERROR_SUCCESS) {
                SetLastError(lastError);
            }
            return failure;
        }
        return real(arguments...);
    }
};

struct FailableCall {
    windows::Redirection To;
    Countdown* Failures;
    void (*Lead)(void* real);
};

// A failing call of `name` answers `failure` and sets `lastError`, if there is one; any other goes to `real`.
template <unsigned Number, typename Result, typename... Arguments>
FailableCall MakeFailable(const char* name, Result(WINAPI* real)(Arguments...),
                          std::type_identity_t<Result> failure, DWORD lastError) {
    using Function = Failable<Number, Result, Arguments...>;
    Function::real = real;
    Function::failure = failure;
    Function::lastError = lastError;
    return {{name, reinterpret_cast<void*>(Function::Call)}, &Function::countdown, [](void* other) {
                Function::real = reinterpret_cast<Result(WINAPI*)(Arguments...)>(other);
            }};
}

// What each answers when the system runs out of what it needs, or forbids it.
const auto& FailableCalls() {
    using windows::Resource;
    using windows::Takes;
    using windows::TakesKey;
    static const std::array calls = {
        MakeFailable<0>("CreateFileW", Takes<Resource::Handle, windows::OpenFileOrDevice>::Call,
                        INVALID_HANDLE_VALUE, ERROR_FILE_NOT_FOUND),
        MakeFailable<1>("QueueUserAPC", windows::QueueUserCall, 0, ERROR_NOT_ENOUGH_MEMORY),
        MakeFailable<2>("WaitForSingleObjectEx", windows::WaitForObject, WAIT_FAILED, ERROR_INVALID_HANDLE),
        MakeFailable<3>("CreateEventW", Takes<Resource::Handle, CreateEventW>::Call, nullptr,
                        ERROR_NOT_ENOUGH_MEMORY),
        MakeFailable<4>("CreateMutexW", Takes<Resource::Handle, windows::CreateKnownMutex>::Call, nullptr,
                        ERROR_NOT_ENOUGH_MEMORY),
        MakeFailable<5>("CreateThread", Takes<Resource::Handle, CreateThread>::Call, nullptr,
                        ERROR_NOT_ENOUGH_MEMORY),
        MakeFailable<6>("HeapAlloc", Takes<Resource::HeapBlock, HeapAlloc>::Call, nullptr, ERROR_SUCCESS),
        MakeFailable<7>("GlobalAlloc", Takes<Resource::GlobalBlock, GlobalAlloc>::Call, nullptr,
                        ERROR_NOT_ENOUGH_MEMORY),
        MakeFailable<8>("GlobalReAlloc", GlobalReAlloc, nullptr, ERROR_NOT_ENOUGH_MEMORY),
        MakeFailable<9>("GlobalLock", GlobalLock, nullptr, ERROR_DISCARDED),
        MakeFailable<10>("RegisterEventSourceW", Takes<Resource::EventSource, RegisterEventSourceW>::Call,
                         nullptr, ERROR_NOT_ENOUGH_MEMORY),
        MakeFailable<11>("RegOpenKeyExW", TakesKey<RegOpenKeyExW>::Call, ERROR_ACCESS_DENIED, ERROR_SUCCESS),
        MakeFailable<12>("RegCreateKeyW", TakesKey<RegCreateKeyW>::Call, ERROR_ACCESS_DENIED, ERROR_SUCCESS),
        MakeFailable<13>("RegSetValueExW", RegSetValueExW, ERROR_ACCESS_DENIED, ERROR_SUCCESS),
        MakeFailable<14>("RegQueryValueExW", RegQueryValueExW, ERROR_ACCESS_DENIED, ERROR_SUCCESS),
        MakeFailable<15>("TlsAlloc", TlsAlloc, TLS_OUT_OF_INDEXES, ERROR_NOT_ENOUGH_MEMORY),
    };
    return calls;
}

template <typename Function>
void* Address(Function* function) {
    return reinterpret_cast<void*>(function);
}

std::vector<windows::Redirection> AllRedirections() {
    using windows::GivesBack;
    using windows::Resource;
    using windows::Takes;
    std::vector<windows::Redirection> all = {
        {"DeviceIoControl", Address(windows::ControlDevice)},
        {"WaitForSingleObject", Address(windows::WaitForOneObject)},
        {"SleepEx", Address(windows::SleepAlertably)},
        {"Sleep", Address(SleepOnTimer)},
        {"timeGetTime", Address(ReadTimer)},
        {"CloseHandle", Address(GivesBack<Resource::Handle, windows::CloseAnyHandle>::Call)},
        {"RegCloseKey", Address(GivesBack<Resource::RegistryKey, RegCloseKey>::Call)},
        {"DeregisterEventSource", Address(GivesBack<Resource::EventSource, DeregisterEventSource>::Call)},
        {"GlobalFree", Address(GivesBack<Resource::GlobalBlock, GlobalFree>::Call)},
        {"HeapFree", Address(GivesBack<Resource::HeapBlock, HeapFree>::Call)},
        {"CreatePopupMenu", Address(Takes<Resource::UserObject, CreatePopupMenu>::Call)},
        {"DestroyMenu", Address(GivesBack<Resource::UserObject, DestroyMenu>::Call)},
        {"LoadBitmapW", Address(Takes<Resource::UserObject, LoadBitmapW>::Call)},
        {"DeleteObject", Address(GivesBack<Resource::UserObject, DeleteObject>::Call)},
        {"ImageList_Create", Address(Takes<Resource::UserObject, ImageList_Create>::Call)},
        {"ImageList_Destroy", Address(GivesBack<Resource::UserObject, ImageList_Destroy>::Call)},
    };
    for (const FailableCall& call : FailableCalls()) {
        all.push_back(call.To);
    }
    return all;
}

std::vector<windows::Redirection>& Redirections() {
    static std::vector<windows::Redirection> all = AllRedirections();
    return all;
}

}  // namespace

void host::InstallTimer(Timer* timer) {
    installedTimer = timer;
}

DWORD TimerMilliseconds() {
    host::Timer* timer = installedTimer;
    return timer ? timer->Milliseconds() : static_cast<DWORD>(host::Nanoseconds() / 1000000);
}

namespace windows {

std::span<const Redirection> RedirectedCalls() {
    return Redirections();
}

void AddRedirection(const Redirection& redirection) {
    for (const FailableCall& call : FailableCalls()) {
        if (std::string_view(call.To.Function) == redirection.Function) {
            call.Lead(redirection.Replacement);
            return;
        }
    }
    Redirections().push_back(redirection);
}

bool ArmFailure(const std::string& function, unsigned nth) {
    for (const FailableCall& call : FailableCalls()) {
        if (function == call.To.Function) {
            call.Failures->Add(nth);
            return true;
        }
    }
    return false;
}

bool AnyFailureIsArmed() {
    return std::any_of(FailableCalls().begin(), FailableCalls().end(),
                       [](const FailableCall& call) { return call.Failures->IsArmed(); });
}

void DisarmFailures() {
    for (const FailableCall& call : FailableCalls()) {
        call.Failures->Clear();
    }
}

}  // namespace windows
}  // namespace simulator
