#include <sys/mman.h>

#include "platform/inspect.h"
#include "platform/machine.h"
#include "tests/support/system.h"
#include "tools/machine/host.h"

namespace test_system {

namespace {

constexpr size_t PageSize = 4096;

}  // namespace

void FreshMachine() {
    kestvox::UnloadWaveDriver();
    platform::UseMachine("");
    platform::ClearMessageBoxes();
    platform::AnswerMessageBoxes(IDOK);
    platform::ClearHelpRequests();
}

HMODULE LoadDriver() {
    return LoadLibraryW(TEXT("kestvox.dll"));
}

std::string Usage() {
    const platform::Usage usage = platform::CurrentUsage();
    return std::to_string(usage.Handles) + " handles, " + std::to_string(usage.Threads) + " threads, " +
           std::to_string(usage.GlobalBlocks) + " global blocks, " + std::to_string(usage.HeapBlocks) +
           " heap blocks, " + std::to_string(usage.HeldMutexes) + " mutexes held, " +
           std::to_string(usage.Windows) + " windows, " + std::to_string(usage.UserObjects) +
           " menus, pictures and the like";
}

void* TakePage() {
    void* page = mmap(nullptr, PageSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return page != MAP_FAILED ? page : nullptr;
}

void GiveBackPage(void* page) {
    munmap(page, PageSize);
}

std::vector<MessageBoxShown> MessageBoxes() {
    std::vector<MessageBoxShown> shown;
    for (const platform::MessageBoxRecord& box : platform::MessageBoxes()) {
        shown.push_back({box.Owner, box.Text, box.Caption, box.Style});
    }
    return shown;
}

void AnswerMessageBoxes(int button) {
    platform::AnswerMessageBoxes(button);
}

std::vector<HelpRequest> HelpShown() {
    std::vector<HelpRequest> shown;
    for (const platform::HelpRequest& request : platform::HelpRequests()) {
        shown.push_back({request.File, request.Command, request.Data});
    }
    return shown;
}

std::vector<LoggedEvent> EventLog() {
    std::vector<LoggedEvent> events;
    for (const platform::EventRecord& event : platform::EventLog()) {
        events.push_back({event.Source, event.Type, event.Id});
    }
    return events;
}

void FailCall(const char* function, unsigned nth) {
    platform::FailCall(function, nth);
}

unsigned long MutexReleases() {
    return platform::MutexReleases();
}

bool CallFailuresAreWaiting() {
    return platform::CallFailuresAreWaiting();
}

void ClearCallFailures() {
    platform::ClearCallFailures();
}

}  // namespace test_system
