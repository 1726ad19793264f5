// What tests wait for before they look at what completions have set off.
#include <windows.h>

#include <gtest/gtest.h>

#include "platform/device.h"

namespace {

int callsRun = 0;

void CALLBACK CountCall(ULONG_PTR) {
    ++callsRun;
}

TEST(Quiet, IsNotWaitedForByTheThreadThatIsBusy) {
    QueueUserAPC(CountCall, GetCurrentThread(), 0);
    EXPECT_EQ(SleepEx(0, TRUE), WAIT_IO_COMPLETION);
    EXPECT_EQ(callsRun, 1);
    EXPECT_TRUE(platform::WaitUntilQuiet(0));
    EXPECT_EQ(SleepEx(0, TRUE), 0u);
}

}  // namespace
