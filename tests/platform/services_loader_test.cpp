#include <windows.h>

#include <gtest/gtest.h>

#include <vector>

#include "platform/inspect.h"
#include "tests/platform/fake_driver/fake_driver.h"
#include "tests/platform/services_process.h"

namespace {

using namespace fake_driver;

// The reasons that DllMain was called with; 100 more when the process ended.
std::vector<DWORD> Reasons() {
    std::vector<DWORD> reasons;
    for (const platform::EventRecord& record : platform::EventLog()) {
        if (record.Source == ModuleSource) {
            reasons.push_back(record.Id + 100u * record.Category);
        }
    }
    return reasons;
}

TEST(Loader, CountsReferencesAndReallyUnloads) {
    platform::UseMachine("");
    const HMODULE module = LoadLibraryW(u"FAKE_DRIVER.DLL");
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(LoadLibraryW(u"fake_driver"), module);
    auto* const given = reinterpret_cast<void*>(GetProcAddress(module, "GivenHandle"));
    EXPECT_EQ(reinterpret_cast<ModuleHandleRoutine>(given)(), module);

    EXPECT_EQ(GetProcAddress(module, "NoSuchExport"), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_PROC_NOT_FOUND});
    EXPECT_EQ(GetProcAddress(module, "RegisterEventSourceW"), nullptr) << "an import is no export";

    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_NE(GetProcAddress(module, "GivenHandle"), nullptr);
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(Reasons(), (std::vector<DWORD>{DLL_PROCESS_ATTACH, DLL_PROCESS_DETACH}));
    EXPECT_FALSE(FreeLibrary(module));
    EXPECT_EQ(GetProcAddress(module, "GivenHandle"), nullptr);
    EXPECT_TRUE(IsBadReadPtr(given, 1)) << "the image is still mapped";

    EXPECT_EQ(LoadLibraryW(u"no_such_module.dll"), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
}

TEST(Loader, ProcessExitDetaches) {
    const services_test::NamedMachine machine;
    const pid_t child = fork();
    if (child == 0) {
        LoadLibraryW(FileName);
        exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Reasons(), (std::vector<DWORD>{DLL_PROCESS_ATTACH, 100 + DLL_PROCESS_DETACH}));
}

}  // namespace
