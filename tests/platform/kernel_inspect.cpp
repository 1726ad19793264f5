// Behind the curtain: quiet and usage.
#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>

#include "platform/device.h"
#include "platform/inspect.h"

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

}  // namespace
