// Events, alertable waits and procedure calls: what any Win32 program may rely on.
#include <windows.h>

#include <gtest/gtest.h>

#include <vector>

#include "platform/device.h"

namespace {

std::vector<int> callsRun;

void CALLBACK NoteCall(ULONG_PTR number) {
    callsRun.push_back(static_cast<int>(number));
}

void CALLBACK QueueAnotherCall(ULONG_PTR number) {
    NoteCall(number);
    QueueUserAPC(NoteCall, GetCurrentThread(), number + 1);
}

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
    EXPECT_TRUE(platform::WaitUntilQuiet(0)) << "no thread waits for itself";
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

}  // namespace
