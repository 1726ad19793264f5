// What processes of one machine share, and what one gives back when it dies; and what else of the layer no
// test of the driver notices.
#include "platform/machine.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <mutex>

#include "platform/device.h"
#include "platform/inspect.h"
#include "tests/processes/companion.h"

namespace {

class Machine : public testing::Test {
    const SharedMachine machine_;
};

TEST_F(Machine, MutexOfADeadProcessIsAbandonedOnce) {
    constexpr const WCHAR* Name = TEXT("kernel test machine mutex");
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, Name);
    const unsigned long waits = platform::NamedMutexWaits();
    for (const DWORD limit : {DWORD{0}, DWORD{60000}, DWORD{INFINITE}}) {
        Companion other([](Companion& test) {
            const HANDLE own = CreateMutexW(nullptr, FALSE, Name);
            WaitForSingleObject(own, INFINITE);
            WaitForSingleObject(own, INFINITE);
            test.Ask();
        });
        EXPECT_EQ(other.Hear(), 0);
        EXPECT_EQ(WaitForSingleObject(mutex, 0), static_cast<DWORD>(WAIT_TIMEOUT));
        EXPECT_EQ(WaitForSingleObject(mutex, 3), static_cast<DWORD>(WAIT_TIMEOUT));
        other.Kill();
        EXPECT_EQ(WaitForSingleObject(mutex, limit), WAIT_ABANDONED);
        EXPECT_TRUE(ReleaseMutex(mutex));
        EXPECT_EQ(WaitForSingleObject(mutex, limit), WAIT_OBJECT_0);
        EXPECT_TRUE(ReleaseMutex(mutex));
    }
    EXPECT_EQ(platform::NamedMutexWaits() - waits, 3u) << "for the 3 ms only";
    CloseHandle(mutex);

    // It is gone with the last living process that uses it; this one had closed nothing.
    Companion last([](Companion& test) {
        CreateMutexW(nullptr, TRUE, Name);
        test.Ask();
    });
    EXPECT_EQ(last.Hear(), 0);
    last.Kill();
    const HANDLE fresh = CreateMutexW(nullptr, TRUE, Name);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_SUCCESS});
    EXPECT_TRUE(ReleaseMutex(fresh));
    CloseHandle(fresh);
}

struct Counter {
    platform::SharedMutex Lock;
    int Value;
    void Initialize() { Lock.Initialize(); }
};
const platform::MachineRegion<Counter> SharedCounter("test-counter");

TEST_F(Machine, LockOfADeadProcessPassesOn) {
    SharedCounter->Value = 1;
    Companion other([](Companion& test) {
        SharedCounter->Lock.lock();
        SharedCounter->Value = 2;
        test.Ask();
    });
    EXPECT_EQ(other.Hear(), 0);
    other.Kill();
    const std::lock_guard guard(SharedCounter->Lock);
    EXPECT_EQ(SharedCounter->Value, 2);
}

// Two pages of which only the first is there.
TEST(PointerProbe, LooksAtEveryPage) {
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    void* memory = mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    char* const boundary = static_cast<char*>(memory) + page;
    ASSERT_EQ(mprotect(boundary, page, PROT_NONE), 0);
    EXPECT_FALSE(IsBadReadPtr(boundary - 32, 32) || IsBadReadPtr(memory, page));
    EXPECT_TRUE(IsBadReadPtr(boundary - 32, 33) && IsBadReadPtr(boundary, 1));
    EXPECT_TRUE(IsBadReadPtr(boundary + page, static_cast<UINT_PTR>(-1)));
    munmap(memory, 2 * page);
}

TEST(Loader, TellsWhatIsNotThere) {
    EXPECT_EQ(LoadLibraryW(u"no_such_module.dll"), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
    const HMODULE module = LoadLibraryW(u"KESTVOX.DLL");
    EXPECT_EQ(LoadLibraryW(u"kestvox"), module);
    EXPECT_EQ(GetProcAddress(module, "RegisterEventSourceW"), nullptr) << "an import is no export";
    EXPECT_EQ(GetLastError(), DWORD{ERROR_PROC_NOT_FOUND});
    EXPECT_TRUE(FreeLibrary(module) && FreeLibrary(module));
    EXPECT_FALSE(FreeLibrary(module));
}

TEST(Quiet, IsNotWaitedForByTheThreadThatIsBusy) {
    static bool called;
    called = false;
    QueueUserAPC([](ULONG_PTR) { called = true; }, GetCurrentThread(), 0);
    EXPECT_EQ(SleepEx(0, TRUE), WAIT_IO_COMPLETION);
    EXPECT_TRUE(called);
    EXPECT_TRUE(platform::WaitUntilQuiet(0));
    EXPECT_EQ(SleepEx(0, TRUE), 0u);
}

}  // namespace
