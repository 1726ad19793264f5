// Mutexes: ownership, recursion, abandonment, names.
#include <windows.h>

#include <gtest/gtest.h>

namespace {

// Runs `routine` on a thread of its own until it ends, and answers its result.
DWORD OnAnotherThread(LPTHREAD_START_ROUTINE routine, void* argument) {
    const HANDLE thread = CreateThread(nullptr, 0, routine, argument, 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
    DWORD code = 0;
    GetExitCodeThread(thread, &code);
    CloseHandle(thread);
    return code;
}

DWORD WINAPI TryForAMoment(LPVOID mutex) {
    return WaitForSingleObject(mutex, 3);
}
DWORD WINAPI ReleaseAndTellError(LPVOID mutex) {
    return ReleaseMutex(mutex) ? 0 : GetLastError();
}

class Mutex : public testing::Test {
protected:
    ~Mutex() override { CloseHandle(mutex_); }
    HANDLE mutex_ = CreateMutexW(nullptr, FALSE, nullptr);
};

TEST_F(Mutex, IsTheOwnersUntilReleasedAsOftenAsTaken) {
    EXPECT_EQ(WaitForSingleObject(mutex_, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(mutex_, 0), WAIT_OBJECT_0);
    EXPECT_EQ(OnAnotherThread(TryForAMoment, mutex_), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_EQ(OnAnotherThread(ReleaseAndTellError, mutex_), static_cast<DWORD>(ERROR_NOT_OWNER));
    EXPECT_TRUE(ReleaseMutex(mutex_));
    EXPECT_EQ(OnAnotherThread(TryForAMoment, mutex_), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_TRUE(ReleaseMutex(mutex_));
    EXPECT_FALSE(ReleaseMutex(mutex_));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NOT_OWNER));
}

TEST_F(Mutex, OfAThreadThatEndedIsAbandonedOnce) {
    for (const bool exits : {false, true}) {
        OnAnotherThread(exits ? LPTHREAD_START_ROUTINE([](LPVOID mutex) -> DWORD {
                            WaitForSingleObject(mutex, INFINITE);
                            ExitThread(0);
                        })
                              : LPTHREAD_START_ROUTINE([](LPVOID mutex) -> DWORD {
                                    WaitForSingleObject(mutex, INFINITE);
                                    return WaitForSingleObject(mutex, INFINITE);
                                }),
                        mutex_);
        // At once: a thread's mutexes are free before it is seen to have ended.
        EXPECT_EQ(WaitForSingleObject(mutex_, 0), WAIT_ABANDONED);
        EXPECT_TRUE(ReleaseMutex(mutex_));
        EXPECT_EQ(WaitForSingleObject(mutex_, 0), WAIT_OBJECT_0);
        EXPECT_TRUE(ReleaseMutex(mutex_));
        EXPECT_FALSE(ReleaseMutex(mutex_));
    }
}

}  // namespace
