// Handles and pointer probes: what any Win32 program may rely on.
#include <windows.h>

#include <gtest/gtest.h>

namespace {

TEST(Handle, GoesBadWhenClosedAndIsNoNewerOne) {
    const HANDLE old = CreateEventW(nullptr, TRUE, TRUE, nullptr);
    ASSERT_TRUE(CloseHandle(old));
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, nullptr);
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);

    EXPECT_FALSE(CloseHandle(old));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_FALSE(SetEvent(old));
    EXPECT_EQ(WaitForSingleObject(old, 0), WAIT_FAILED);
    EXPECT_EQ(WaitForSingleObject(event, 0), static_cast<DWORD>(WAIT_TIMEOUT))
        << "set through the old handle";

    SetLastError(0);
    EXPECT_FALSE(SetEvent(mutex)) << "a handle of another kind";
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_FALSE(ReleaseMutex(event));
    EXPECT_FALSE(CloseHandle(nullptr));
    EXPECT_FALSE(SetEvent(INVALID_HANDLE_VALUE));
    CloseHandle(mutex);
    CloseHandle(event);
}

}  // namespace
