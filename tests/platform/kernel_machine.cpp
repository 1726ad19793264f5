// What processes of one machine share, and what one gives back when it dies.
#include <windows.h>

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <mutex>

#include "platform/machine.h"
#include "tests/platform/services_process.h"

namespace {

constexpr const WCHAR* Name = TEXT("kernel test machine mutex");

class Machine : public testing::Test {
    const services_test::NamedMachine machine_;
};

// Runs in a child process until `run` returns its exit code, or kills itself when `dies`.
template <typename Run>
pid_t StartProcess(Run run, bool dies = false) {
    const pid_t child = fork();
    if (child == 0) {
        const int code = run();
        if (dies) {
            kill(getpid(), SIGKILL);
        }
        _exit(code);
    }
    return child;
}

int CollectProcess(pid_t child) {
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int TakeMutex() {
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, Name);
    WaitForSingleObject(mutex, INFINITE);
    return WaitForSingleObject(mutex, INFINITE) == WAIT_OBJECT_0 ? 0 : 1;
}

TEST_F(Machine, MutexOfADeadProcessIsAbandonedOnce) {
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, Name);
    for (const bool dies : {false, true}) {
        for (const DWORD limit : {DWORD{0}, DWORD{60000}, DWORD{INFINITE}}) {
            CollectProcess(StartProcess(TakeMutex, dies));
            EXPECT_EQ(WaitForSingleObject(mutex, limit), WAIT_ABANDONED);
            EXPECT_TRUE(ReleaseMutex(mutex));
            EXPECT_EQ(WaitForSingleObject(mutex, limit), WAIT_OBJECT_0);
            EXPECT_TRUE(ReleaseMutex(mutex));
        }
    }
    CloseHandle(mutex);
}

TEST_F(Machine, WaitEndsWhenTheOwnersProcessDies) {
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, Name);
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = StartProcess([&] {
        TakeMutex();
        return write(ready[1], "x", 1) == 1 ? pause() : 1;
    });
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    for (const DWORD limit : {DWORD{0}, DWORD{3}}) {
        EXPECT_EQ(WaitForSingleObject(mutex, limit), static_cast<DWORD>(WAIT_TIMEOUT));
    }
    kill(child, SIGKILL);
    EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_ABANDONED);
    CollectProcess(child);
    ReleaseMutex(mutex);
    CloseHandle(mutex);
    close(ready[0]);
    close(ready[1]);
}

TEST_F(Machine, MutexNameIsGoneWithTheLastLivingProcessThatUsesIt) {
    EXPECT_EQ(CollectProcess(StartProcess([] {
                  TakeMutex();
                  return CreateMutexW(nullptr, FALSE, Name) != nullptr &&
                         GetLastError() == ERROR_ALREADY_EXISTS;
              })),
              1);
    // The child closed nothing, and held the mutex.
    const HANDLE mutex = CreateMutexW(nullptr, TRUE, Name);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SUCCESS));
    // A child that opens and closes it takes nothing away from this process.
    EXPECT_EQ(CollectProcess(StartProcess([] {
                  const HANDLE opened = CreateMutexW(nullptr, FALSE, Name);
                  const bool existed = GetLastError() == ERROR_ALREADY_EXISTS;
                  const bool busy = WaitForSingleObject(opened, 0) == WAIT_TIMEOUT;
                  return existed && busy && !ReleaseMutex(opened) && CloseHandle(opened);
              })),
              1);
    CreateMutexW(nullptr, FALSE, Name);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    ReleaseMutex(mutex);
}

struct Counter {
    platform::SharedMutex Lock;
    int Created;
    int Value;
    void Initialize() {
        Lock.Initialize();
        ++Created;
    }
};
const platform::MachineRegion<Counter> SharedCounter("test-counter");

TEST_F(Machine, LockOfADeadProcessPassesOn) {
    SharedCounter->Value = 1;
    CollectProcess(StartProcess(
        [] {
            SharedCounter->Lock.lock();
            SharedCounter->Value = 2;
            return 0;
        },
        true));
    const std::lock_guard guard(SharedCounter->Lock);
    EXPECT_EQ(SharedCounter->Value, 2);
}

// Two pages of which only the first is there.
TEST(PointerProbe, LooksAtEveryPage) {
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    void* memory = mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    char* const boundary = static_cast<char*>(memory) + page;
    ASSERT_EQ(mprotect(boundary, page, PROT_NONE), 0);
    EXPECT_FALSE(IsBadReadPtr(boundary - 32, 32));
    EXPECT_TRUE(IsBadReadPtr(boundary - 32, 33));
    EXPECT_TRUE(IsBadReadPtr(boundary, 1));
    EXPECT_FALSE(IsBadReadPtr(memory, page));
    EXPECT_TRUE(IsBadReadPtr(boundary + page, static_cast<UINT_PTR>(-1)));
    munmap(memory, 2 * page);
}

}  // namespace
