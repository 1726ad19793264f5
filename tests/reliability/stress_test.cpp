// Several threads on several streams, with a fixed seed and a fixed number of operations, while the computer
// sleeps and wakes, and ports are opened and closed beside them. A model counts every header, open and close.
#include <mmddk.h>

#include <memory>
#include <random>
#include <shared_mutex>
#include <thread>

#include "tests/reliability/client.h"
#include "tests/reliability/stress_model.h"
#include "tests/support/driver_library.h"
#include "tests/support/driver_test.h"
#include "tests/support/system.h"
#include "tests/support/wave_sound.h"

namespace {

constexpr int64_t Millisecond = 1000;
constexpr unsigned ClientThreads = 4;
#ifdef _WIN32
constexpr unsigned OperationsOfClient = 500;  // in Wine all of it runs slower
#else
constexpr unsigned OperationsOfClient = 1500;
#endif
constexpr unsigned OperationsBeside = 40;  // of the threads that open other ports, and that sleep and wake

// A device that several threads use. A close is for one thread alone, as the system demands; from inside its
// callbacks a client asks for the position and hands the header in again.
class SharedDevice {
public:
    SharedDevice(UINT device, bool output) : device_(device), output_(output) {}

    void Do(std::mt19937& random) {
        const auto what = static_cast<unsigned>(random() % 100);
        if (what < 4 || !IsOpen()) {
            Reopen();
            return;
        }
        const std::shared_lock use(inUse_);
        if (handle_ == nullptr) {
            return;
        }
        if (what < 60) {
            again_ = 2;
            HandIn(static_cast<unsigned>(random() % HeaderPool::Count));
        } else if (what < 70) {
            Position();
        } else {
            Control(what);
        }
    }

    void End() {
        CloseIfOpen();
        EXPECT_TRUE(headers_.AllAreBack()) << "device " << device_;
        EXPECT_EQ(headers_.HandedIn(), returned_) << "device " << device_;
        EXPECT_EQ(headers_.Unexpected(), 0u) << "device " << device_;
        EXPECT_EQ(opened_, opens_);
        EXPECT_EQ(closed_, opens_);
        tally::Add(tally::HandedIn, headers_.HandedIn());
        tally::Add(tally::Lost, headers_.HandedIn() - returned_ + headers_.Unexpected());
    }

private:
    bool IsOpen() {
        const std::shared_lock use(inUse_);
        return handle_ != nullptr;
    }

    void Reopen() {
        const std::unique_lock alone(inUse_);
        CloseIfOpen();
        const WaveFormat format = PcmFormat(44100, 2, output_ ? 16 : 24);
        const auto callback = reinterpret_cast<DWORD_PTR>(&SharedDevice::Callback);
        const auto self = reinterpret_cast<DWORD_PTR>(this);
        closing_ = false;
        void* handle = nullptr;
        const MMRESULT result = output_ ? waveOutOpen(reinterpret_cast<HWAVEOUT*>(&handle), device_,
                                                      format.Get(), callback, self, CALLBACK_FUNCTION)
                                        : waveInOpen(reinterpret_cast<HWAVEIN*>(&handle), device_,
                                                     format.Get(), callback, self, CALLBACK_FUNCTION);
        EXPECT_TRUE(result == MMSYSERR_NOERROR || IsRefusalOfOpen(result)) << result;
        if (result == MMSYSERR_NOERROR) {
            ++opens_;
            handle_ = handle;
        }
    }

    // Inside the callbacks of the reset the client hands in no more, so the close finds nothing in the card.
    void CloseIfOpen() {
        if (handle_ == nullptr) {
            return;
        }
        closing_ = true;
        Always(output_ ? waveOutReset(Out()) : waveInReset(In()));
        Always(output_ ? waveOutClose(Out()) : waveInClose(In()));
        EXPECT_TRUE(headers_.AllAreBack()) << "device " << device_ << " is closed";
        handle_ = nullptr;
    }

    void HandIn(unsigned turn) {
        const bool loops = output_ && turn % 4 == 0;
        WAVEHDR* header = headers_.Take(turn, loops ? WHDR_BEGINLOOP | WHDR_ENDLOOP : 0, loops ? 2 : 0);
        if (header == nullptr) {
            return;
        }
        const MMRESULT result = output_ ? waveOutWrite(Out(), header, sizeof *header)
                                        : waveInAddBuffer(In(), header, sizeof *header);
        if (result != MMSYSERR_NOERROR) {
            EXPECT_EQ(result, static_cast<MMRESULT>(MMSYSERR_INVALHANDLE)) << "only a close refuses";
            headers_.Refused(*header);
        }
    }

    void Position() {
        MMTIME time = {};
        time.wType = TIME_BYTES;
        AtBest(output_ ? waveOutGetPosition(Out(), &time, sizeof time)
                       : waveInGetPosition(In(), &time, sizeof time));
    }

    void Control(unsigned what) {
        using OutputCall = MMRESULT(WINAPI*)(HWAVEOUT);
        using InputCall = MMRESULT(WINAPI*)(HWAVEIN);
        constexpr OutputCall OutputCalls[] = {waveOutPause, waveOutRestart, waveOutRestart, waveOutBreakLoop,
                                              waveOutReset};
        constexpr InputCall InputCalls[] = {waveInStart, waveInStop, waveInStart, waveInStart, waveInReset};
        Always(output_ ? OutputCalls[what % 5](Out()) : InputCalls[what % 5](In()));
    }

    static void CALLBACK Callback(HWAVEOUT, UINT message, DWORD_PTR self, DWORD_PTR header, DWORD_PTR) {
        reinterpret_cast<SharedDevice*>(self)->Hear(message, reinterpret_cast<WAVEHDR*>(header));
    }

    void Hear(UINT message, WAVEHDR* header) {
        switch (message) {
        case WOM_OPEN:
        case WIM_OPEN:
            ++opened_;
            break;
        case WOM_CLOSE:
        case WIM_CLOSE:
            ++closed_;
            break;
        default:
            ++returned_;
            headers_.Returned(*header);
            if (!closing_ && --again_ >= 0) {
                Position();
                HandIn(static_cast<unsigned>(header->dwUser));
            }
        }
    }

    HWAVEOUT Out() const { return static_cast<HWAVEOUT>(handle_.load()); }
    HWAVEIN In() const { return static_cast<HWAVEIN>(handle_.load()); }

    const UINT device_;
    const bool output_;
    UseLock inUse_;  // a close alone, everything else together; callbacks come without it
    std::atomic<void*> handle_ = nullptr;
    std::atomic<bool> closing_ = false;
    std::atomic<int> again_ = 0;  // how often a callback hands in again: a card that takes nothing must not
                                  // keep the client busy for ever
    std::atomic<unsigned> returned_ = 0;
    std::atomic<unsigned> opened_ = 0;
    std::atomic<unsigned> closed_ = 0;
    unsigned opens_ = 0;
    HeaderPool headers_;
};

class StressTest : public DriverTest {
protected:
    StressTest() : DriverTest(2) {}
};

TEST_F(StressTest, EverythingAtOnce) {
    const DriverLibrary driver;
    ASSERT_TRUE(driver.IsLoaded());
    const std::string usage = test_system::Usage();
    std::vector<std::unique_ptr<SharedDevice>> devices;
    for (UINT device = 0; device < 3; ++device) {
        devices.push_back(std::make_unique<SharedDevice>(device, true));
        devices.push_back(std::make_unique<SharedDevice>(device, false));
    }
    std::atomic<unsigned> busy = 0;
    std::vector<std::thread> threads;
    const auto run = [&](unsigned seed, unsigned operations, auto operation) {
        ++busy;
        threads.emplace_back([&busy, seed, operations, operation] {
            std::mt19937 random(seed);
            for (unsigned i = 0; i < operations; ++i) {
                operation(random);
            }
            tally::Add(tally::Operations, operations);
            --busy;
        });
    };
    for (unsigned client = 0; client < ClientThreads; ++client) {
        run(client, OperationsOfClient,
            [&devices](std::mt19937& random) { devices[random() % devices.size()]->Do(random); });
    }
    run(100, OperationsBeside, [this, &driver](std::mt19937&) {
        EXPECT_EQ(driver.DriverProc(DRV_POWER, PWR_SUSPENDREQUEST), 1);
        Cards().PowerCycle(0);
        Cards().PowerCycle(1);
        EXPECT_EQ(driver.DriverProc(DRV_POWER, PWR_SUSPENDRESUME), 1);
    });
    run(101, OperationsBeside, [](std::mt19937&) {
        Player player;
        if (player.Open(3, PcmFormat(44100, 2, 16))) {
            player.HandedIn(player.Wave.Write(Pattern(HeaderPool::Bytes)));
            Always(waveOutReset(player.Wave.Handle()));
            player.Close();
            player.ExpectBalance();
        }
    });
    while (busy != 0) {
        Cards().Advance(Millisecond);
        Cards().ForgetAudio();
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (auto& device : devices) {
        device->End();
    }
    EXPECT_EQ(Cards().OpenFiles(), 0u);
    EXPECT_EQ(test_system::Usage(), usage);

    // The cards are as good as new.
    for (UINT device = 0; device < 4; ++device) {
        Cards().ForgetAudio();
        const WaveFormat format = PcmFormat(96000, 2, 16);
        WavePlayer player;
        ASSERT_EQ(player.Open(device, format), MMSYSERR_NOERROR) << device;
        EXPECT_EQ(player.Write(Pattern(4000)), MMSYSERR_NOERROR);
        Cards().Advance(20 * Millisecond);
        EXPECT_EQ(player.Close(), MMSYSERR_NOERROR);
        EXPECT_TRUE(Cards().Played(device / 2, static_cast<simulator::Port>(device % 2)) ==
                    Sound(format, Pattern(4000)))
            << device;
    }
}

}  // namespace
