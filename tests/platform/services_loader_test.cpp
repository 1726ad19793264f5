#include <windows.h>

#include <gtest/gtest.h>

#include <vector>

#include "platform/inspect.h"
#include "tests/platform/fake_driver/fake_driver.h"
#include "tests/platform/services_process.h"

namespace {

using namespace fake_driver;

DWORD* SharedWordOf(HMODULE module) {
    void* routine = reinterpret_cast<void*>(GetProcAddress(module, "SharedWord"));
    return reinterpret_cast<SharedWordRoutine>(routine)();
}

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
    EXPECT_EQ(GetModuleHandleW(FileName), nullptr);
    const HMODULE module = LoadLibraryW(u"FAKE_DRIVER.DLL");
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(LoadLibraryW(u"fake_driver"), module);
    EXPECT_EQ(GetModuleHandleW(u"Fake_Driver.dll"), module);
    auto* const given = reinterpret_cast<void*>(GetProcAddress(module, "GivenHandle"));
    EXPECT_EQ(reinterpret_cast<ModuleHandleRoutine>(given)(), module);

    EXPECT_EQ(GetProcAddress(module, "NoSuchExport"), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_PROC_NOT_FOUND});
    EXPECT_EQ(GetProcAddress(module, "RegisterEventSourceW"), nullptr) << "an import is no export";

    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(GetModuleHandleW(FileName), module);
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(GetModuleHandleW(FileName), nullptr);
    EXPECT_EQ(Reasons(), (std::vector<DWORD>{DLL_PROCESS_ATTACH, DLL_PROCESS_DETACH}));
    EXPECT_FALSE(FreeLibrary(module));
    EXPECT_EQ(GetProcAddress(module, "SharedWord"), nullptr);
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

// One side of a conversation with a child process.
class Channel {
public:
    Channel() {
        if (pipe(down_) != 0 || pipe(up_) != 0) {
            abort();
        }
    }
    ~Channel() {
        for (int file : {down_[0], down_[1], up_[0], up_[1]}) {
            close(file);
        }
    }
    void TellChild() { Put(down_[1]); }
    void TellParent() { Put(up_[1]); }
    void AwaitParent() { Get(down_[0]); }
    void AwaitChild() { Get(up_[0]); }

private:
    static void Put(int file) { EXPECT_EQ(write(file, "", 1), 1); }
    static void Get(int file) {
        char byte = 0;
        EXPECT_EQ(read(file, &byte, 1), 1);
    }

    int down_[2];
    int up_[2];
};

TEST(SharedSection, LivesWithTheLastProcess) {
    const services_test::NamedMachine machine;
    Channel channel;
    const pid_t child = fork();
    if (child == 0) {
        DWORD* const word = SharedWordOf(LoadLibraryW(FileName));
        const bool fresh = *word == 41;
        *word = 7;
        channel.TellParent();
        channel.AwaitParent();
        _exit(fresh && *word == 8 ? 0 : 1);  // without unloading, as a process that dies
    }

    channel.AwaitChild();
    HMODULE module = LoadLibraryW(FileName);
    EXPECT_EQ(*SharedWordOf(module), 7u);
    *SharedWordOf(module) = 8;
    channel.TellChild();
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(*SharedWordOf(module), 8u);

    FreeLibrary(module);
    module = LoadLibraryW(FileName);
    EXPECT_EQ(*SharedWordOf(module), 41u) << "the last one took the data with it";
    *SharedWordOf(module) = 9;
    FreeLibrary(module);

    EXPECT_TRUE(services_test::InChild([] {
        *SharedWordOf(LoadLibraryW(FileName)) = 10;
        return true;
    }));
    module = LoadLibraryW(FileName);
    EXPECT_EQ(*SharedWordOf(module), 41u) << "a dead process holds nothing";
    FreeLibrary(module);
}

}  // namespace
