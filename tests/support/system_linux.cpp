#include <sys/mman.h>

#include "platform/machine.h"
#include "tests/support/system.h"
#include "tools/machine/host.h"

namespace test_system {

constexpr size_t PageSize = 4096;

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

}  // namespace test_system
