// Events, alertable waits and procedure calls: what any Win32 program may rely on.
#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

namespace {

std::vector<int> callsRun;

void CALLBACK NoteCall(ULONG_PTR number) {
    callsRun.push_back(static_cast<int>(number));
}

void CALLBACK QueueAnotherCall(ULONG_PTR number) {
    NoteCall(number);
    QueueUserAPC(NoteCall, GetCurrentThread(), number + 1);
}

// A thread that waits alertably for `Stop` and counts what woke it.
struct AlertableThread {
    HANDLE Stop = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HANDLE Ran = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    std::atomic<int> WokenByCalls{0};
    HANDLE Thread = CreateThread(nullptr, 0, Run, this, 0, nullptr);

    static DWORD WINAPI Run(LPVOID argument) {
        auto* self = static_cast<AlertableThread*>(argument);
        while (WaitForSingleObjectEx(self->Stop, INFINITE, TRUE) == WAIT_IO_COMPLETION) {
            ++self->WokenByCalls;
        }
        return 7;
    }

    static void CALLBACK SignalRan(ULONG_PTR event) { SetEvent(reinterpret_cast<HANDLE>(event)); }

    bool RunACall() { return QueueUserAPC(SignalRan, Thread, reinterpret_cast<ULONG_PTR>(Ran)) != 0; }

    void End() {
        SetEvent(Stop);
        WaitForSingleObject(Thread, INFINITE);
    }

    ~AlertableThread() {
        End();
        CloseHandle(Thread);
        CloseHandle(Ran);
        CloseHandle(Stop);
    }
};

class AlertableWait : public testing::Test {
protected:
    void SetUp() override { callsRun.clear(); }
    ~AlertableWait() override { CloseHandle(event_); }

    HANDLE event_ = CreateEventW(nullptr, TRUE, FALSE, nullptr);
};

TEST_F(AlertableWait, RunsEveryQueuedCallInOrderIncludingThoseQueuedMeanwhile) {
    QueueUserAPC(NoteCall, GetCurrentThread(), 1);
    QueueUserAPC(QueueAnotherCall, GetCurrentThread(), 2);
    QueueUserAPC(NoteCall, GetCurrentThread(), 10);

    EXPECT_EQ(WaitForSingleObjectEx(event_, INFINITE, TRUE), WAIT_IO_COMPLETION);
    EXPECT_EQ(callsRun, (std::vector{1, 2, 10, 3}));
    EXPECT_EQ(SleepEx(0, TRUE), 0u) << "no call may be left";
}

TEST_F(AlertableWait, SignalledObjectWinsOverQueuedCalls) {
    QueueUserAPC(NoteCall, GetCurrentThread(), 1);
    SetEvent(event_);

    EXPECT_EQ(WaitForSingleObjectEx(event_, INFINITE, TRUE), WAIT_OBJECT_0);
    EXPECT_TRUE(callsRun.empty());

    ResetEvent(event_);
    EXPECT_EQ(WaitForSingleObjectEx(event_, 0, TRUE), WAIT_IO_COMPLETION);
    EXPECT_EQ(callsRun, std::vector{1});
}

TEST_F(AlertableWait, OtherWaitsLeaveQueuedCallsAlone) {
    QueueUserAPC(NoteCall, GetCurrentThread(), 1);
    EXPECT_EQ(WaitForSingleObject(event_, 5), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_EQ(WaitForSingleObjectEx(event_, 5, FALSE), static_cast<DWORD>(WAIT_TIMEOUT));
    SleepEx(0, FALSE);
    EXPECT_TRUE(callsRun.empty());
    EXPECT_EQ(SleepEx(INFINITE, TRUE), WAIT_IO_COMPLETION);
    EXPECT_EQ(callsRun, std::vector{1});
}

TEST_F(AlertableWait, MutexThatAnotherThreadHoldsCanBeInterrupted) {
    const HANDLE mutex = CreateMutexW(nullptr, TRUE, nullptr);
    const HANDLE thread = CreateThread(
        nullptr, 0,
        [](LPVOID held) -> DWORD {
            QueueUserAPC(NoteCall, GetCurrentThread(), 1);
            return WaitForSingleObjectEx(held, INFINITE, TRUE);
        },
        mutex, 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
    DWORD result = 0;
    GetExitCodeThread(thread, &result);
    EXPECT_EQ(result, WAIT_IO_COMPLETION);
    ReleaseMutex(mutex);
    CloseHandle(thread);
    CloseHandle(mutex);
}

TEST_F(AlertableWait, IsWokenByCallsOfAnotherThreadUntilItsThreadHasEnded) {
    AlertableThread service;
    for (int i = 0; i < 100; ++i) {
        ASSERT_TRUE(service.RunACall());
        ASSERT_EQ(WaitForSingleObject(service.Ran, INFINITE), WAIT_OBJECT_0);
    }
    service.End();
    EXPECT_GE(service.WokenByCalls, 1);
    EXPECT_LE(service.WokenByCalls, 100);
    DWORD code = 0;
    EXPECT_TRUE(GetExitCodeThread(service.Thread, &code));
    EXPECT_EQ(code, 7u);
    EXPECT_FALSE(service.RunACall());
}

TEST(Event, AutomaticEventSatisfiesOneWaitManualEventAll) {
    const HANDLE automatic = CreateEventW(nullptr, FALSE, TRUE, nullptr);
    EXPECT_EQ(WaitForSingleObject(automatic, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(automatic, 0), static_cast<DWORD>(WAIT_TIMEOUT));
    SetEvent(automatic);
    SetEvent(automatic);
    EXPECT_EQ(WaitForSingleObject(automatic, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(automatic, 0), static_cast<DWORD>(WAIT_TIMEOUT)) << "sets do not add up";

    const HANDLE manual = CreateEventW(nullptr, TRUE, TRUE, nullptr);
    EXPECT_EQ(WaitForSingleObject(manual, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(manual, INFINITE), WAIT_OBJECT_0);
    ResetEvent(manual);
    EXPECT_EQ(WaitForSingleObject(manual, 0), static_cast<DWORD>(WAIT_TIMEOUT));
    CloseHandle(automatic);
    CloseHandle(manual);
}

// Two threads hand a plain counter to and fro: no signal may be lost, and none seen twice.
TEST(Event, AutomaticEventsHandOverBetweenThreads) {
    struct Court {
        HANDLE Ping = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        HANDLE Pong = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        int Counter = 0;
    } court;
    constexpr int kRounds = 2000;
    const HANDLE thread = CreateThread(
        nullptr, 0,
        [](LPVOID argument) -> DWORD {
            auto* shared = static_cast<Court*>(argument);
            for (int i = 0; i < kRounds; ++i) {
                WaitForSingleObject(shared->Ping, INFINITE);
                ++shared->Counter;
                SetEvent(shared->Pong);
            }
            return 0;
        },
        &court, 0, nullptr);
    for (int i = 0; i < kRounds; ++i) {
        ++court.Counter;
        SetEvent(court.Ping);
        ASSERT_EQ(WaitForSingleObject(court.Pong, INFINITE), WAIT_OBJECT_0);
        ASSERT_EQ(court.Counter, 2 * (i + 1));
    }
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    CloseHandle(court.Ping);
    CloseHandle(court.Pong);
}

class MultipleWait : public testing::Test {
protected:
    ~MultipleWait() override {
        for (const HANDLE handle : handles_) {
            CloseHandle(handle);
        }
    }
    DWORD Any(DWORD milliseconds = 0) { return WaitForMultipleObjects(3, handles_, FALSE, milliseconds); }
    DWORD All(DWORD milliseconds = 0) { return WaitForMultipleObjects(3, handles_, TRUE, milliseconds); }

    const HANDLE handles_[3] = {CreateEventW(nullptr, FALSE, FALSE, nullptr),
                                CreateMutexW(nullptr, FALSE, nullptr),
                                CreateEventW(nullptr, FALSE, FALSE, nullptr)};
};

TEST_F(MultipleWait, ForAnyTakesTheFirstOneOnly) {
    SetEvent(handles_[2]);
    EXPECT_EQ(Any(), WAIT_OBJECT_0 + 1) << "the free mutex comes before the event";
    EXPECT_TRUE(ReleaseMutex(handles_[1]));
    SetEvent(handles_[0]);
    EXPECT_EQ(Any(), WAIT_OBJECT_0);
    EXPECT_FALSE(ReleaseMutex(handles_[1])) << "taken though another object satisfied the wait";
    EXPECT_EQ(WaitForSingleObject(handles_[2], 0), WAIT_OBJECT_0);
}

TEST_F(MultipleWait, ForAllTakesNothingUntilAllCanBeTaken) {
    SetEvent(handles_[0]);
    EXPECT_EQ(All(), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_EQ(All(3), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_FALSE(ReleaseMutex(handles_[1]));

    const HANDLE thread = CreateThread(
        nullptr, 0, [](LPVOID event) -> DWORD { return static_cast<DWORD>(SetEvent(event)); }, handles_[2], 0,
        nullptr);
    EXPECT_EQ(All(INFINITE), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseMutex(handles_[1]));
    EXPECT_EQ(Any(), WAIT_OBJECT_0 + 1) << "both events were reset by the wait";
    ReleaseMutex(handles_[1]);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
}

TEST_F(MultipleWait, ForAllGivesBackTheMutexesItTookInVain) {
    const HANDLE held = CreateMutexW(nullptr, TRUE, nullptr);
    const HANDLE both[] = {handles_[1], held};
    const HANDLE thread = CreateThread(
        nullptr, 0,
        [](LPVOID mutexes) -> DWORD {
            return WaitForMultipleObjects(2, static_cast<const HANDLE*>(mutexes), TRUE, 3);
        },
        const_cast<HANDLE*>(both), 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
    DWORD result = 0;
    GetExitCodeThread(thread, &result);
    EXPECT_EQ(result, static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_EQ(WaitForSingleObject(handles_[1], 0), WAIT_OBJECT_0) << "not abandoned by the thread";
    ReleaseMutex(handles_[1]);
    ReleaseMutex(held);
    CloseHandle(held);
    CloseHandle(thread);
}

TEST_F(MultipleWait, SeesAMutexThatIsFreedMeanwhile) {
    WaitForSingleObject(handles_[1], INFINITE);
    const HANDLE thread = CreateThread(
        nullptr, 0,
        [](LPVOID handles) -> DWORD {
            return WaitForMultipleObjects(3, static_cast<const HANDLE*>(handles), FALSE, INFINITE);
        },
        const_cast<HANDLE*>(handles_), 0, nullptr);
    ReleaseMutex(handles_[1]);
    WaitForSingleObject(thread, INFINITE);
    DWORD result = 0;
    GetExitCodeThread(thread, &result);
    EXPECT_EQ(result, WAIT_OBJECT_0 + 1);
    CloseHandle(thread);
}

TEST_F(MultipleWait, RefusesBadArguments) {
    const HANDLE twice[] = {handles_[0], handles_[0]};
    EXPECT_EQ(WaitForMultipleObjects(2, twice, TRUE, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(WaitForMultipleObjects(0, twice, FALSE, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    const HANDLE closed[] = {handles_[0], nullptr};
    EXPECT_EQ(WaitForMultipleObjects(2, closed, FALSE, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
}

}  // namespace
