// What a client asks of its streams is asked of the kernel without the mutex that all processes share: only a
// completion keeps it from end to end.
#include <thread>

#include "platform/device.h"
#include "tests/support/driver_test.h"
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

// In front of the simulated cards: looks at every request of the thread that made it.
class RequestWatch : public device::Driver {
public:
    RequestWatch() : cards_(platform::InstallDeviceDriver(this)) {}
    ~RequestWatch() { platform::InstallDeviceDriver(cards_); }

    unsigned Requests() const { return requests_; }
    unsigned UnderMutex() const { return underMutex_; }

    DWORD Open(const WCHAR* path, void** file) override { return cards_->Open(path, file); }
    void Close(void* file) override { cards_->Close(file); }
    DWORD Control(void* file, device::Request& request) override {
        if (GetCurrentThreadId() == thread_) {
            ++requests_;
            underMutex_ += IsFree(TEXT("ZPH_Kestrelvox_Wave_Driver_Mutex")) ? 0 : 1;
        }
        return cards_->Control(file, request);
    }

private:
    device::Driver* cards_;
    DWORD thread_ = GetCurrentThreadId();
    unsigned requests_ = 0;
    unsigned underMutex_ = 0;
};

class DriverMutexTest : public DriverTest {};

TEST_F(DriverMutexTest, IsNotHeldOverTheRequestsOfMessages) {
    waveOutGetNumDevs();  // no thread can end while the library is being loaded, or unloaded
    RequestWatch watch;
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
    EXPECT_EQ(waveOutPause(player.Handle()), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutRestart(player.Handle()), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutSetVolume(player.Handle(), 0x80008000), MMSYSERR_NOERROR);
    player.Position();
    recorder.Position();
    Cards().Advance(100000);
    EXPECT_EQ(player.DoneCount(), 3u);
    EXPECT_EQ(recorder.Stop(), MMSYSERR_NOERROR);
    player.Shut();
    recorder.Shut();
    EXPECT_GT(watch.Requests(), 50u);
    EXPECT_EQ(watch.UnderMutex(), 0u);
}

}  // namespace
