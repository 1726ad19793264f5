#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "platform/inspect.h"
#include "platform/machine.h"
#include "tests/platform/fake_driver/fake_driver.h"

namespace {

using namespace fake_driver;

constexpr WAVEFORMATEX kMono = {WAVE_FORMAT_PCM, 1, 44100, 88200, 2, 16, 0};
constexpr WAVEFORMATEX kStereo = {WAVE_FORMAT_PCM, 2, 44100, 176400, 4, 16, 0};

struct Client {
    std::vector<UINT> Messages;
    WAVEHDR* LastHeader = nullptr;

    static void CALLBACK OnWave(HWAVEOUT, UINT message, DWORD_PTR instance, DWORD_PTR first, DWORD_PTR) {
        auto* const client = reinterpret_cast<Client*>(instance);
        client->Messages.push_back(message);
        if (message == WOM_DONE) {
            client->LastHeader = reinterpret_cast<WAVEHDR*>(first);
        }
    }
};

class Wave : public testing::Test {
protected:
    void SetUp() override {
        platform::UseMachine("");
        setenv("KESTVOX_DRIVER", "fake_driver.dll", 1);
        header_.lpData = data_;
        header_.dwBufferLength = sizeof data_;
    }
    void TearDown() override {
        platform::UnloadWaveDriver();
        unsetenv("KESTVOX_DRIVER");
    }

    MMRESULT Open(UINT device, const WAVEFORMATEX& format) {
        return waveOutOpen(&out_, device, &format, reinterpret_cast<DWORD_PTR>(&Client::OnWave),
                           reinterpret_cast<DWORD_PTR>(&client_), CALLBACK_FUNCTION);
    }

    // The messages that one of the driver's entries has got, counts of devices left out.
    static std::vector<DWORD> Received(const std::u16string& entry) {
        std::vector<DWORD> messages;
        for (const platform::EventRecord& record : platform::EventLog()) {
            const bool asked = entry == OutSource && record.Id == WODM_GETNUMDEVS;
            if (record.Source == entry && !asked) {
                messages.push_back(record.Id);
            }
        }
        return messages;
    }

    Client client_;
    HWAVEOUT out_ = nullptr;
    char data_[64] = {};
    WAVEHDR header_ = {};
};

#define EXPECT_MM(call, expected) EXPECT_EQ(call, MMRESULT{expected})

TEST_F(Wave, TheDriverIsLoadedOnceAndLeaves) {
    const platform::Usage before = platform::CurrentUsage();
    EXPECT_TRUE(Received(DriverSource).empty());
    EXPECT_EQ(waveOutGetNumDevs(), 2u);
    EXPECT_EQ(waveInGetNumDevs(), 2u);
    EXPECT_EQ(Received(DriverSource), (std::vector<DWORD>{DRV_LOAD, DRV_ENABLE, DRV_OPEN}));
    ASSERT_EQ(Open(1, kStereo), MMRESULT{MMSYSERR_NOERROR});
    waveOutPrepareHeader(out_, &header_, sizeof header_);
    waveOutWrite(out_, &header_, sizeof header_);

    platform::UnloadWaveDriver();
    EXPECT_EQ(Received(OutSource),
              (std::vector<DWORD>{WODM_OPEN, WODM_PREPARE, WODM_WRITE, WODM_RESET, WODM_CLOSE}));
    EXPECT_EQ(client_.Messages, (std::vector<UINT>{WOM_OPEN, WOM_DONE, WOM_CLOSE}));
    EXPECT_EQ(Received(DriverSource),
              (std::vector<DWORD>{DRV_LOAD, DRV_ENABLE, DRV_OPEN, DRV_CLOSE, DRV_DISABLE, DRV_FREE}));
    EXPECT_EQ(GetModuleHandleW(FileName), nullptr);
    for (const platform::EventRecord& record : platform::EventLog()) {
        if (record.Source == DriverSource) {
            EXPECT_EQ(record.Category, record.Id == DRV_CLOSE ? 77 : 0) << "the driver's id";
        }
    }
    EXPECT_MM(waveOutReset(out_), MMSYSERR_INVALHANDLE);
    EXPECT_EQ(platform::CurrentUsage(), before);
}

TEST_F(Wave, ManyFirstCallsLoadOneDriver) {
    UINT counts[4] = {};
    {
        std::vector<std::jthread> threads;
        for (UINT& count : counts) {
            threads.emplace_back([&count] { count = waveOutGetNumDevs(); });
        }
    }
    for (UINT count : counts) {
        EXPECT_EQ(count, 2u);
    }
    EXPECT_EQ(Received(DriverSource), (std::vector<DWORD>{DRV_LOAD, DRV_ENABLE, DRV_OPEN}));
}

TEST_F(Wave, HandlesGoBadWithTheCloseOnly) {
    ASSERT_EQ(Open(0, kMono), MMRESULT{MMSYSERR_NOERROR});
    UINT device = 9;
    EXPECT_MM(waveOutGetID(out_, &device), MMSYSERR_NOERROR);
    EXPECT_EQ(device, 0u);
    waveOutMessage(out_, RefuseClose, 1, 0);
    EXPECT_MM(waveOutClose(out_), WAVERR_STILLPLAYING);
    EXPECT_MM(waveOutMessage(out_, RefuseClose, 0, 0), MMSYSERR_NOERROR);
    EXPECT_MM(waveInReset(reinterpret_cast<HWAVEIN>(out_)), MMSYSERR_INVALHANDLE);
    EXPECT_MM(waveOutClose(out_), MMSYSERR_NOERROR);
    EXPECT_EQ(client_.Messages, (std::vector<UINT>{WOM_OPEN, WOM_CLOSE}));

    const HWAVEOUT closed = out_;
    ASSERT_EQ(Open(0, kMono), MMRESULT{MMSYSERR_NOERROR});
    EXPECT_NE(out_, closed);
    EXPECT_MM(waveOutClose(closed), MMSYSERR_INVALHANDLE);
    EXPECT_MM(waveOutWrite(closed, &header_, sizeof header_), MMSYSERR_INVALHANDLE);
    EXPECT_MM(waveOutGetID(closed, &device), MMSYSERR_INVALHANDLE);
}

TEST_F(Wave, QueriesAndTheMapper) {
    EXPECT_MM(waveOutOpen(nullptr, 0, &kMono, 0, 0, WAVE_FORMAT_QUERY), MMSYSERR_NOERROR);
    EXPECT_MM(waveOutOpen(nullptr, 0, &kStereo, 0, 0, WAVE_FORMAT_QUERY), WAVERR_BADFORMAT);
    EXPECT_MM(waveOutOpen(nullptr, WAVE_MAPPER, &kStereo, 0, 0, WAVE_FORMAT_QUERY), MMSYSERR_NOERROR);
    EXPECT_TRUE(client_.Messages.empty());

    UINT device = 9;
    ASSERT_EQ(Open(WAVE_MAPPER, kStereo), MMRESULT{MMSYSERR_NOERROR});
    waveOutGetID(out_, &device);
    EXPECT_EQ(device, 1u);
    HWAVEOUT second = nullptr;
    EXPECT_MM(waveOutOpen(&second, WAVE_MAPPER, &kStereo, 0, 0, 0), MMSYSERR_ALLOCATED)
        << "the one that knows the format is busy";
    EXPECT_EQ(second, nullptr);
    EXPECT_MM(waveOutOpen(&second, WAVE_MAPPER, &kMono, 0, 0, 0), MMSYSERR_NOERROR);
    EXPECT_MM(waveOutClose(second), MMSYSERR_NOERROR);
}

TEST_F(Wave, OpenChecksItsArguments) {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, nullptr);
    const struct {
        DWORD Flags;
        DWORD_PTR Callback;
        MMRESULT Result;
    } cases[] = {
        {CALLBACK_NULL, 0, MMSYSERR_NOERROR},
        {CALLBACK_THREAD, GetCurrentThreadId(), MMSYSERR_NOERROR},
        {CALLBACK_EVENT, reinterpret_cast<DWORD_PTR>(event), MMSYSERR_NOERROR},
        {CALLBACK_EVENT, reinterpret_cast<DWORD_PTR>(mutex), MMSYSERR_INVALPARAM},
        {CALLBACK_FUNCTION, 0, MMSYSERR_INVALPARAM},
        {CALLBACK_WINDOW, 0, MMSYSERR_INVALPARAM},
        {CALLBACK_WINDOW, 0x4242, MMSYSERR_INVALPARAM},
        {0x00040000, 1, MMSYSERR_INVALFLAG},
        {0x00060000, 1, MMSYSERR_INVALFLAG},
        {0x00000010, 0, MMSYSERR_INVALFLAG},
    };
    for (const auto& entry : cases) {
        EXPECT_EQ(waveOutOpen(nullptr, 0, &kMono, entry.Callback, 0, entry.Flags | WAVE_FORMAT_QUERY),
                  entry.Result)
            << std::hex << entry.Flags;
    }
    EXPECT_MM(waveOutOpen(nullptr, 0, &kMono, 0, 0, 0), MMSYSERR_INVALPARAM);
    EXPECT_MM(waveOutOpen(&out_, 0, nullptr, 0, 0, 0), MMSYSERR_INVALPARAM);
    EXPECT_MM(waveOutOpen(&out_, 2, &kMono, 0, 0, 0), MMSYSERR_BADDEVICEID);
    CloseHandle(event);
    CloseHandle(mutex);
}

TEST_F(Wave, HeadersArePreparedHere) {
    ASSERT_EQ(Open(0, kMono), MMRESULT{MMSYSERR_NOERROR});
    EXPECT_MM(waveOutWrite(out_, &header_, sizeof header_), WAVERR_UNPREPARED);
    EXPECT_MM(waveOutPrepareHeader(out_, nullptr, sizeof header_), MMSYSERR_INVALPARAM);
    EXPECT_MM(waveOutPrepareHeader(out_, &header_, sizeof header_ - 1), MMSYSERR_INVALPARAM);

    header_.dwFlags = WHDR_BEGINLOOP | WHDR_ENDLOOP;
    EXPECT_MM(waveOutPrepareHeader(out_, &header_, sizeof header_), MMSYSERR_NOERROR);
    EXPECT_EQ(header_.dwFlags, DWORD{WHDR_PREPARED | WHDR_BEGINLOOP | WHDR_ENDLOOP});
    EXPECT_MM(waveOutPrepareHeader(out_, &header_, sizeof header_), MMSYSERR_NOERROR);
    EXPECT_MM(waveOutWrite(out_, &header_, sizeof header_ - 1), MMSYSERR_INVALPARAM);
    EXPECT_MM(waveOutWrite(out_, &header_, sizeof header_), MMSYSERR_NOERROR);
    EXPECT_MM(waveOutWrite(out_, &header_, sizeof header_), WAVERR_STILLPLAYING);
    EXPECT_MM(waveOutUnprepareHeader(out_, &header_, sizeof header_), WAVERR_STILLPLAYING);
    EXPECT_MM(waveOutClose(out_), WAVERR_STILLPLAYING);

    EXPECT_MM(waveOutMessage(out_, CompleteOldest, 0, 0), MMSYSERR_NOERROR);
    EXPECT_EQ(client_.LastHeader, &header_);
    EXPECT_MM(waveOutUnprepareHeader(out_, &header_, sizeof header_), MMSYSERR_NOERROR);
    EXPECT_EQ(header_.dwFlags & WHDR_PREPARED, 0u);
    EXPECT_MM(waveOutUnprepareHeader(out_, &header_, sizeof header_), MMSYSERR_NOERROR);
    EXPECT_EQ(Received(OutSource), (std::vector<DWORD>{WODM_OPEN, WODM_PREPARE, WODM_WRITE, WODM_CLOSE,
                                                       CompleteOldest, WODM_UNPREPARE}))
        << "what the front can refuse does not reach the driver";
}

}  // namespace
