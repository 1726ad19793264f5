// The computer sleeps and wakes, and another component takes the card away and gives it back.
#include <mmddk.h>

#include "tests/support/output_test.h"

namespace {

using simulator::Port;
using Lines = std::vector<std::string>;

class PowerTest : public OutputTest {
protected:
    void SetUp() override {
        waveOutGetNumDevs();
        driver_ = test_system::LoadDriver();
        driverProc_ = test_system::DriverEntry<DRIVERPROC>(driver_, "DriverProc");
        ASSERT_NE(driverProc_, nullptr);
    }
    void TearDown() override {
        FreeLibrary(driver_);
        OutputTest::TearDown();
    }

    void SendPower(LPARAM event) { EXPECT_EQ(driverProc_(0, nullptr, DRV_POWER, event, 0), 1); }

    // The card forgets everything and the sound stands still.
    void Sleep() {
        SendPower(PWR_SUSPENDREQUEST);
        const size_t played = Played().size();
        Cards().PowerCycle(0);
        Cards().Advance(Second);
        EXPECT_EQ(Played().size(), played);
    }

    HMODULE driver_ = nullptr;
    DRIVERPROC driverProc_ = nullptr;
};

TEST_F(PowerTest, PlaybackGoesOnAfterTheSleep) {
    for (const LPARAM wake : {PWR_SUSPENDRESUME, PWR_CRITICALRESUME}) {
        const WaveFormat format = PcmFormat(96000, 1, 24);
        ASSERT_EQ(player_.Open(AnalogOut, format), MMSYSERR_NOERROR);
        const std::vector<BYTE> data = Pattern(30000);
        for (int i = 0; i < 20; ++i) {
            ASSERT_EQ(player_.Write(data), MMSYSERR_NOERROR);
        }
        Cards().Advance(Second / 2);
        Sleep();
        EXPECT_FALSE(Cards().ChannelClaimed(0, 2) && Output().BuffersInFlight == 0);
        SendPower(wake);
        EXPECT_EQ(Cards().SampleRate(0), 96000u);
        EXPECT_EQ(Cards().OutputRegister(0, Port::Analog, 0) & 0xE0, 0xE0);
        EXPECT_EQ(Cards().MixerGain(0, 2), 128u);
        Cards().Advance(10 * Second);
        std::vector<BYTE> all;
        for (int i = 0; i < 20; ++i) {
            all.insert(all.end(), data.begin(), data.end());
        }
        EXPECT_TRUE(Played() == Sound(format, all));
        ExpectEachReturnedOnce();
        EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR);
        Cards().ForgetAudio();
    }
}

TEST_F(PowerTest, BothPortsComeBackOnTheirRate) {
    const WaveFormat format = PcmFormat(48000, 2, 16);
    WavePlayer digital;
    ASSERT_EQ(player_.Open(AnalogOut, format), MMSYSERR_NOERROR);
    ASSERT_EQ(digital.Open(DigitalOut, TaggedFormat(WAVE_FORMAT_DOLBY_AC3_SPDIF, 48000, 2, 16)),
              MMSYSERR_NOERROR);
    const std::vector<BYTE> data = Pattern(192000);
    ASSERT_EQ(player_.Write(data), MMSYSERR_NOERROR);
    ASSERT_EQ(digital.Write(data), MMSYSERR_NOERROR);
    Cards().Advance(Second / 4);
    Sleep();
    SendPower(PWR_SUSPENDRESUME);
    EXPECT_EQ(Cards().SampleRate(0), 48000u);
    EXPECT_EQ(Cards().IndirectRegister(0, 0) & 0x02, 0x02) << "still marked as no audio";
    Cards().Advance(5 * Second);
    EXPECT_TRUE(Played(Port::Analog) == Sound(format, data));
    EXPECT_TRUE(Played(Port::Digital) == Sound(format, data));
    EXPECT_EQ(digital.Close(), MMSYSERR_NOERROR);
    ExpectEachReturnedOnce();
}

TEST_F(PowerTest, APausedPortStaysPaused) {
    const WaveFormat format = PcmFormat(88200, 2, 16);
    ASSERT_EQ(player_.Open(AnalogOut, format), MMSYSERR_NOERROR);
    ASSERT_EQ(player_.Write(Pattern(100000)), MMSYSERR_NOERROR);
    Cards().Advance(Second / 10);
    EXPECT_EQ(waveOutPause(player_.Handle()), MMSYSERR_NOERROR);
    const size_t played = Played().size();
    Sleep();
    SendPower(PWR_SUSPENDRESUME);
    Cards().Advance(Second);
    EXPECT_EQ(Played().size(), played);
    EXPECT_EQ(waveOutRestart(player_.Handle()), MMSYSERR_NOERROR);
    Cards().Advance(Second);
    EXPECT_TRUE(Played() == Sound(format, Pattern(100000)));
    ExpectEachReturnedOnce();
}

TEST_F(PowerTest, AStoppedPortPlaysWhatIsWrittenAfterTheSleep) {
    const WaveFormat format = PcmFormat(32000, 2, 16);
    ASSERT_EQ(player_.Open(AnalogOut, format), MMSYSERR_NOERROR);
    Sleep();
    SendPower(PWR_SUSPENDRESUME);
    ASSERT_EQ(player_.Write(Pattern(4000)), MMSYSERR_NOERROR);
    Cards().Advance(Second);
    EXPECT_EQ(Played(), Sound(format, Pattern(4000)));
    ExpectEachReturnedOnce();
}

// What is written while the card is away comes back, and the client is not left waiting.
TEST_F(PowerTest, AWriteDuringTheSleepIsReturned) {
    ASSERT_EQ(player_.Open(AnalogOut, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
    SendPower(PWR_SUSPENDREQUEST);
    ASSERT_EQ(player_.Write(Pattern(4000)), MMSYSERR_NOERROR);
    SendPower(PWR_SUSPENDRESUME);
    Cards().Advance(Second);
    ExpectEachReturnedOnce();
}

// What the client asks for during the sleep is what it finds after it.
TEST_F(PowerTest, RestartAndPauseDuringTheSleepHoldAfterIt) {
    const WaveFormat format = PcmFormat(44100, 2, 16);
    ASSERT_EQ(player_.Open(AnalogOut, format), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutPause(player_.Handle()), MMSYSERR_NOERROR);
    ASSERT_EQ(player_.Write(Pattern(40000)), MMSYSERR_NOERROR);
    Sleep();
    EXPECT_EQ(waveOutRestart(player_.Handle()), MMSYSERR_NOERROR);
    SendPower(PWR_SUSPENDRESUME);
    Cards().Advance(Second / 10);
    EXPECT_TRUE(Output().Started);
    Sleep();
    EXPECT_EQ(waveOutPause(player_.Handle()), MMSYSERR_NOERROR);
    SendPower(PWR_SUSPENDRESUME);
    Cards().Advance(Second);
    EXPECT_EQ(player_.DoneCount(), 0u) << "the port was paused";
    EXPECT_EQ(waveOutRestart(player_.Handle()), MMSYSERR_NOERROR);
    Cards().Advance(Second);
    EXPECT_EQ(Played(), Sound(format, Pattern(40000)));
    ExpectEachReturnedOnce();
}

TEST_F(PowerTest, AStreamClosedDuringTheSleepLeavesNothingForTheNextOne) {
    const WaveFormat format = PcmFormat(44100, 2, 16);
    ASSERT_EQ(player_.Open(AnalogOut, format), MMSYSERR_NOERROR);
    ASSERT_EQ(player_.Write(Pattern(4000)), MMSYSERR_NOERROR);
    Sleep();
    EXPECT_EQ(waveOutReset(player_.Handle()), MMSYSERR_NOERROR);
    EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR);
    ExpectEachReturnedOnce();
    SendPower(PWR_SUSPENDRESUME);
    ASSERT_EQ(player_.Open(AnalogOut, format), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutPause(player_.Handle()), MMSYSERR_NOERROR);
    ASSERT_EQ(player_.Write(Pattern(4000)), MMSYSERR_NOERROR);
    Sleep();
    SendPower(PWR_SUSPENDRESUME);
    Cards().Advance(Second);
    EXPECT_FALSE(Output().Started) << "the port was paused";
    EXPECT_EQ(waveOutRestart(player_.Handle()), MMSYSERR_NOERROR);
    Cards().Advance(Second);
    EXPECT_EQ(Played(), Sound(format, Pattern(4000)));
}

// --- private messages: the PCI configuration ---------------------------------------------------

constexpr UINT SavePci = 0x4000;
constexpr UINT RestorePci = 0x4001;

const Lines SaveRequests = {"READ_PCI_CONFIG 00 4", "READ_PCI_CONFIG 2C 4", "READ_PCI_CONFIG 08 4",
                            "READ_PCI_CONFIG 04 2", "READ_PCI_CONFIG 0D 1", "READ_PCI_CONFIG 10 4",
                            "READ_PCI_CONFIG 3C 1", "RELEASE_CHANNEL"};
const Lines RestoreRequests = {"READ_PCI_CONFIG 00 4",  "READ_PCI_CONFIG 2C 4",  "READ_PCI_CONFIG 08 4",
                               "WRITE_PCI_CONFIG 0D 1", "WRITE_PCI_CONFIG 10 4", "WRITE_PCI_CONFIG 3C 1",
                               "READ_PCI_CONFIG 0D 1",  "READ_PCI_CONFIG 10 4",  "READ_PCI_CONFIG 3C 1",
                               "WRITE_PCI_CONFIG 04 2", "READ_PCI_CONFIG 04 2"};

class PciConfigurationTest : public OutputTest {
protected:
    void SetUp() override {
        ASSERT_EQ(player_.Open(AnalogOut, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
        Cards().ClearTrace();
    }
    // Result and requests of a message.
    void Expect(UINT message, MMRESULT result, const Lines& requests) {
        Cards().ClearTrace();
        EXPECT_EQ(Send(message), result);
        EXPECT_EQ(TraceText(), requests);
    }
    void SetPci(unsigned offset, std::vector<uint8_t> bytes) { Cards().SetPciRegister(0, offset, bytes); }
    // What the last request on that offset returned.
    std::vector<uint8_t> Answer(const std::string& request) {
        std::vector<uint8_t> answer;
        for (const simulator::TraceEntry& entry : Cards().Trace()) {
            if (entry.Text() == request) {
                answer = entry.Output;
            }
        }
        return answer;
    }
};

TEST_F(PciConfigurationTest, WhatWasSavedIsWrittenBack) {
    SetPci(0x0D, {0x40});
    SetPci(0x3C, {0x0B});
    Expect(SavePci, MMSYSERR_NOERROR, SaveRequests);
    const std::vector<uint8_t> address = Answer("READ_PCI_CONFIG 10 4");
    const std::vector<uint8_t> command = Answer("READ_PCI_CONFIG 04 2");
    SetPci(0x0D, {0});
    SetPci(0x10, {0, 0, 0, 0});
    SetPci(0x3C, {0});
    SetPci(0x04, {0, 0});
    Cards().ClearTrace();
    EXPECT_EQ(Send(RestorePci), MMSYSERR_NOERROR);
    Lines requests = TraceText();
    ASSERT_GT(requests.size(), RestoreRequests.size());
    EXPECT_EQ(requests.back(), "ACQUIRE_CHANNEL");
    requests.resize(RestoreRequests.size());
    EXPECT_EQ(requests, RestoreRequests);
    EXPECT_EQ(Answer("READ_PCI_CONFIG 0D 1"), std::vector<uint8_t>{0x40});
    EXPECT_EQ(Answer("READ_PCI_CONFIG 3C 1"), std::vector<uint8_t>{0x0B});
    EXPECT_EQ(Answer("READ_PCI_CONFIG 10 4"), address);
    EXPECT_EQ(Answer("READ_PCI_CONFIG 04 2"), command);
    ASSERT_EQ(player_.Write(Pattern(4000)), MMSYSERR_NOERROR);
    Cards().Advance(Second);
    EXPECT_EQ(player_.Position(), 1000u);
}

TEST_F(PciConfigurationTest, AnotherCardInItsPlaceIsNotTouched) {
    struct Case {
        unsigned Offset;
        size_t Requests;
    };
    for (const Case& test : {Case{0x02, 1}, {0x2E, 2}, {0x08, 3}}) {
        SCOPED_TRACE(test.Offset);
        Expect(SavePci, MMSYSERR_NOERROR, SaveRequests);
        SetPci(test.Offset, {static_cast<uint8_t>(0xE0 + test.Offset)});
        Expect(RestorePci, MMSYSERR_ERROR,
               {RestoreRequests.begin(), RestoreRequests.begin() + static_cast<long>(test.Requests)});
    }
}

TEST_F(PciConfigurationTest, TheFirstStepThatFailsIsTheLast) {
    const auto expectStops = [this](UINT message, const Lines& requests, size_t count) {
        SCOPED_TRACE(testing::Message() << message << ": " << requests[count - 1]);
        Fail(simulator::Fault::AnyCode, static_cast<unsigned>(count));
        Expect(message, MMSYSERR_ERROR, {requests.begin(), requests.begin() + static_cast<long>(count)});
    };
    for (size_t count = 1; count <= SaveRequests.size(); ++count) {
        expectStops(SavePci, SaveRequests, count);
    }
    Expect(SavePci, MMSYSERR_NOERROR, SaveRequests);
    for (size_t count = 1; count <= RestoreRequests.size(); ++count) {
        expectStops(RestorePci, RestoreRequests, count);
    }
    Fail("ACQUIRE_CHANNEL");
    EXPECT_EQ(Send(RestorePci), unsigned{MMSYSERR_ERROR});
    Fail("READ_PCI_CONFIG", 1, simulator::Fault::Kind::Short);
    Expect(SavePci, MMSYSERR_ERROR, {SaveRequests.front()});
}

}  // namespace
