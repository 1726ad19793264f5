// What a client asks of its streams is asked of the kernel without the mutex that all processes share: only a
// completion keeps it from end to end.
#include <thread>

#include "tests/support/driver_test.h"
#include "tests/support/request_gate_linux.h"
#include "tests/support/wave_player.h"
#include "tests/support/wave_recorder.h"

namespace {

// Asked on a thread of its own: a thread may take a mutex again that it holds.
bool IsFree(const WCHAR* name) {
    DWORD result = WAIT_FAILED;
    std::thread([&] {
        HANDLE mutex = CreateMutexW(nullptr, FALSE, name);
        result = WaitForSingleObject(mutex, 0);
        if (result == WAIT_OBJECT_0) {
            ReleaseMutex(mutex);
        }
        CloseHandle(mutex);
    }).join();
    return result == WAIT_OBJECT_0;
}

class DriverMutexTest : public DriverTest {};

TEST_F(DriverMutexTest, IsNotHeldOverTheRequestsOfMessages) {
    waveOutGetNumDevs();  // no thread can end while the library is being loaded, or unloaded
    const DWORD thread = GetCurrentThreadId();
    unsigned requests = 0;
    unsigned underMutex = 0;
    RequestGate gate;
    gate.OnEach([&] {
        if (GetCurrentThreadId() == thread) {
            ++requests;
            underMutex += IsFree(TEXT("ZPH_Kestrelvox_Wave_Driver_Mutex")) ? 0 : 1;
        }
    });
    const WaveFormat format = PcmFormat(44100, 2, 24);
    WavePlayer player;
    WaveRecorder recorder;
    ASSERT_EQ(player.Open(0, format), MMSYSERR_NOERROR);
    ASSERT_EQ(recorder.Open(0, format), MMSYSERR_NOERROR);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(player.Write(Pattern(600)), MMSYSERR_NOERROR);
        EXPECT_EQ(recorder.Add(600), MMSYSERR_NOERROR);
    }
    EXPECT_EQ(recorder.Start(), MMSYSERR_NOERROR);
    EXPECT_EQ(player.Stop(), MMSYSERR_NOERROR);
    EXPECT_EQ(player.Start(), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutSetVolume(player.Handle(), 0x80008000), MMSYSERR_NOERROR);
    player.Position();
    recorder.Position();
    Cards().Advance(100000);
    EXPECT_EQ(player.DoneCount(), 3u);
    EXPECT_EQ(recorder.Stop(), MMSYSERR_NOERROR);
    player.Shut();
    recorder.Shut();
    EXPECT_GT(requests, 50u);
    EXPECT_EQ(underMutex, 0u);
}

}  // namespace
