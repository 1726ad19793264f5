// What a client asks of its streams is asked of the kernel without the mutex that all processes share: only a
// completion keeps it from end to end.
#include <thread>

#include "tests/reliability/story.h"
#include "tests/support/request_gate_linux.h"

namespace {

// Asked on a thread of its own: a thread may take a mutex again that it holds.
bool IsFree(const WCHAR* name) {
    DWORD result = WAIT_FAILED;
    std::thread([&] {
        HANDLE mutex = CreateMutexW(nullptr, FALSE, name);
        result = WaitForSingleObject(mutex, 60000);  // a completion may have it for a moment
        if (result == WAIT_OBJECT_0) {
            ReleaseMutex(mutex);
        }
        CloseHandle(mutex);
    }).join();
    return result == WAIT_OBJECT_0;
}

using DriverMutexTest = WithCards<DriverTest, 2>;

TEST_F(DriverMutexTest, IsNotHeldOverTheRequestsOfMessages) {
    const DriverLibrary driver;  // no thread can end while the library is being loaded, or unloaded
    const DWORD thread = GetCurrentThreadId();
    unsigned requests = 0;
    unsigned underMutex = 0;
    RequestGate gate;
    gate.Before = [&](DWORD) {
        if (GetCurrentThreadId() == thread && underMutex == 0) {
            ++requests;
            underMutex += IsFree(TEXT("ZPH_Kestrelvox_Wave_Driver_Mutex")) ? 0 : 1;
        }
    };
    for (const Story& story : Stories()) {
        Cast cast{.Cards = Cards(), .Driver = driver, .Output = {}, .Input = {}, .Follower = {}};
        story.Tell(cast);
    }
    EXPECT_GT(requests, 500u);
    EXPECT_EQ(underMutex, 0u);
}

}  // namespace
