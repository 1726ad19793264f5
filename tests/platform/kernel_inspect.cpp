// Behind the curtain: quiet, usage, failures on demand, turned clocks.
#include <windows.h>
#include <mmsystem.h>

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

#include "platform/device.h"
#include "platform/inspect.h"
#include "platform/time_source.h"

namespace {

// A service as a driver has it: a procedure call only collects, the work is done after the wait.
struct Service {
    HANDLE Stop = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HANDLE Ready = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    HANDLE Gate = CreateEventW(nullptr, TRUE, TRUE, nullptr);
    int Collected = 0;  // by the thread itself
    std::atomic<int> Done{0};
    platform::ThreadReference Reference;
    HANDLE Thread = CreateThread(nullptr, 0, Run, this, 0, nullptr);

    Service() { WaitForSingleObject(Ready, INFINITE); }

    static void CALLBACK Collect(ULONG_PTR service, ULONG_PTR second, ULONG_PTR third) {
        reinterpret_cast<Service*>(service)->Collected += second == 2 && third == 3 ? 1 : 0;
    }

    static DWORD WINAPI Run(LPVOID argument) {
        auto* self = static_cast<Service*>(argument);
        self->Reference = platform::CurrentThreadReference();
        SetEvent(self->Ready);
        while (WaitForSingleObjectEx(self->Stop, INFINITE, TRUE) == WAIT_IO_COMPLETION) {
            WaitForSingleObject(self->Gate, INFINITE);
            self->Done += self->Collected;
            self->Collected = 0;
        }
        return 0;
    }

    bool Complete() {
        return platform::QueueProcedureCall(Reference, Collect, reinterpret_cast<ULONG_PTR>(this), 2, 3);
    }

    void End() {
        SetEvent(Stop);
        WaitForSingleObject(Thread, INFINITE);
    }

    ~Service() {
        End();
        for (const HANDLE handle : {Thread, Gate, Ready, Stop}) {
            CloseHandle(handle);
        }
    }
};

TEST(Quiet, ComesWhenEverythingThatCallsSetOffIsDone) {
    Service services[2];
    EXPECT_TRUE(platform::WaitUntilQuiet(60000));
    int sent = 0;
    for (int round = 0; round < 200; ++round) {
        for (Service& service : services) {
            ASSERT_TRUE(service.Complete());
            ASSERT_TRUE(service.Complete());
        }
        sent += 2;
        ASSERT_TRUE(platform::WaitUntilQuiet(60000));
        ASSERT_EQ(services[0].Done, sent);
        ASSERT_EQ(services[1].Done, sent);
    }
}

TEST(Quiet, DoesNotComeWhileAThreadIsStillAtWork) {
    Service service;
    ResetEvent(service.Gate);
    service.Complete();
    EXPECT_FALSE(platform::WaitUntilQuiet(5));
    SetEvent(service.Gate);
    EXPECT_TRUE(platform::WaitUntilQuiet(60000));
    EXPECT_EQ(service.Done, 1);
}

TEST(Quiet, IsNotHeldUpByCallsOfAThreadThatEnds) {
    struct Ending {
        HANDLE Queued = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        HANDLE Ready = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        platform::ThreadReference Reference;
    } ending;
    const HANDLE thread = CreateThread(
        nullptr, 0,
        [](LPVOID argument) -> DWORD {
            auto* self = static_cast<Ending*>(argument);
            self->Reference = platform::CurrentThreadReference();
            SetEvent(self->Ready);
            return WaitForSingleObject(self->Queued, INFINITE);
        },
        &ending, 0, nullptr);
    WaitForSingleObject(ending.Ready, INFINITE);
    const auto never = [](ULONG_PTR, ULONG_PTR, ULONG_PTR) { ADD_FAILURE() << "ran at the thread's end"; };
    EXPECT_TRUE(platform::QueueProcedureCall(ending.Reference, never, 0, 0, 0));
    EXPECT_FALSE(platform::WaitUntilQuiet(0));
    SetEvent(ending.Queued);
    WaitForSingleObject(thread, INFINITE);
    EXPECT_TRUE(platform::WaitUntilQuiet(0));
    EXPECT_FALSE(platform::QueueProcedureCall(ending.Reference, never, 0, 0, 0));
    for (const HANDLE handle : {thread, ending.Queued, ending.Ready}) {
        CloseHandle(handle);
    }
}

// Whoever waits when a manual event is set is released, however soon it is reset.
TEST(Event, ReleasesItsWaitersEvenWhenResetAtOnce) {
    Service service;
    for (int i = 0; i < 100; ++i) {
        service.Complete();
        ASSERT_TRUE(platform::WaitUntilQuiet(60000));  // the service waits for its Stop event
    }
    SetEvent(service.Stop);
    ResetEvent(service.Stop);
    EXPECT_EQ(WaitForSingleObject(service.Thread, 60000), WAIT_OBJECT_0);
}

TEST(Usage, CountsWhatIsTakenAndGivenBack) {
    const platform::Usage before = platform::CurrentUsage();
    const HANDLE mutex = CreateMutexW(nullptr, TRUE, TEXT("usage"));
    WaitForSingleObject(mutex, INFINITE);
    void* memory = HeapAlloc(GetProcessHeap(), 0, 1);
    const HGLOBAL block = GlobalAlloc(0, 1);
    {
        Service service;
        const platform::Usage during = platform::CurrentUsage();
        EXPECT_EQ(during.Handles, before.Handles + 5);
        EXPECT_EQ(during.Threads, before.Threads + 1);
        EXPECT_EQ(during.GlobalBlocks, before.GlobalBlocks + 1);
        EXPECT_EQ(during.HeapBlocks, before.HeapBlocks + 1);
        EXPECT_EQ(during.HeldMutexes, before.HeldMutexes + 1);
    }
    ReleaseMutex(mutex);
    ReleaseMutex(mutex);
    CloseHandle(mutex);
    HeapFree(GetProcessHeap(), 0, memory);
    GlobalFree(block);
    EXPECT_EQ(platform::CurrentUsage(), before);
}

TEST(CallFailure, HitsTheNthCallAndLeavesNothingBehind) {
    const platform::Usage before = platform::CurrentUsage();
    platform::FailCall("CreateEventW", 2);
    platform::FailCall("CreateThread", 1);
    const HANDLE first = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(CreateEventW(nullptr, TRUE, FALSE, nullptr), nullptr);
    EXPECT_EQ(CreateThread(nullptr, 0, nullptr, nullptr, 0, nullptr), nullptr);
    const HANDLE third = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    EXPECT_NE(third, nullptr);

    platform::FailCall("GlobalLock", 1);
    platform::FailCall("WaitForSingleObjectEx", 1);
    EXPECT_EQ(WaitForSingleObject(first, 0), static_cast<DWORD>(WAIT_TIMEOUT)) << "another function";
    EXPECT_EQ(WaitForSingleObjectEx(first, 0, TRUE), WAIT_FAILED);
    platform::ClearCallFailures();
    const HGLOBAL block = GlobalAlloc(0, 4);
    EXPECT_NE(GlobalLock(block), nullptr);
    GlobalFree(block);
    CloseHandle(first);
    CloseHandle(third);
    EXPECT_EQ(platform::CurrentUsage(), before);
}

TEST(TimeSource, AnswersTimerAndSleep) {
    struct Turned : platform::TimeSource {
        DWORD Milliseconds() override { return Now++; }
        void Sleep(DWORD milliseconds) override { Now += milliseconds; }
        DWORD Now = 0xFFFFFFFF;
    } turned;
    platform::InstallTimeSource(&turned);
    EXPECT_EQ(timeGetTime(), 0xFFFFFFFF);
    EXPECT_EQ(timeGetTime(), 0u);
    Sleep(1000);
    EXPECT_EQ(timeGetTime(), 1001u);
    SleepEx(1000, FALSE);
    EXPECT_EQ(timeGetTime(), 2002u);
    platform::InstallTimeSource(nullptr);
    const DWORD real = timeGetTime();
    EXPECT_LT(timeGetTime() - real, 60000u);
    EXPECT_EQ(timeEndPeriod(3), static_cast<MMRESULT>(TIMERR_NOCANDO));
    EXPECT_EQ(timeBeginPeriod(3), static_cast<MMRESULT>(TIMERR_NOERROR));
    EXPECT_EQ(timeEndPeriod(3), static_cast<MMRESULT>(TIMERR_NOERROR));
}

}  // namespace
