// Starting, stopping, resetting and adding, and direct mode.
#include <mmddk.h>

#include <atomic>

#include "tests/support/input_test.h"

namespace {

using simulator::Port;
using Lines = std::vector<std::string>;

constexpr DWORD Rate = 44100;

class InputControlTest : public InputTest {
protected:
    void SetUp() override { Open(Format()); }
    static WaveFormat Format() { return PcmFormat(Rate, 2, 16); }

    Lines Requests(MMRESULT (WaveRecorder::*call)()) {
        Cards().ClearTrace();
        EXPECT_EQ((recorder_.*call)(), MMSYSERR_NOERROR);
        return TraceText();
    }
};

TEST_F(InputControlTest, StartAndStopAskWhatTheyMust) {
    Add(4000);
    EXPECT_EQ(Requests(&WaveRecorder::Stop), Lines{}) << "stopped already";
    EXPECT_EQ(Requests(&WaveRecorder::Start), (Lines{"START_TRANSFER", "ARM_CHANNEL"}));
    EXPECT_EQ(Requests(&WaveRecorder::Start), Lines{}) << "running already";
    Cards().Advance(1000);
    EXPECT_EQ(Requests(&WaveRecorder::Stop),
              (Lines{"DISARM_CHANNEL", "GET_POSITION", "GET_POSITION", "STOP_TRANSFER"}));
    EXPECT_EQ(Requests(&WaveRecorder::Reset), Lines{"FLUSH_BUFFERS"});
}

// A header that comes back during the reset can be recorded into at once.
TEST_F(InputControlTest, WhatIsAddedDuringAResetIsForTheNextStart) {
    std::atomic<unsigned> calls = 0;
    Add(400, 5);
    recorder_.Start();
    Cards().Advance(1000);
    recorder_.OnDone([&](WAVEHDR& header) {
        if (calls++ < 5) {
            EXPECT_EQ(recorder_.AddAgain(header), MMSYSERR_NOERROR);
        }
    });
    recorder_.Reset();
    Cards().Advance(1000);
    const auto signal = PlugIn(2000);
    const size_t before = recorder_.Recorded().size();
    recorder_.Start();
    Cards().Advance(Second / 10);
    EXPECT_EQ(recorder_.DoneCount(), 10u);
    const std::vector<BYTE> all = recorder_.Recorded();
    ASSERT_EQ(all.size(), before + 2000);
    EXPECT_TRUE(std::equal(all.begin() + static_cast<long>(before), all.end(),
                           ClientBytes(Format(), signal).begin()));
}

// Direct mode: the card's own slots, whatever was opened.
TEST_F(InputControlTest, DirectModeBringsWholeSlots) {
    EXPECT_EQ(waveInMessage(recorder_.Handle(), 0x4002, 0, 0), MMSYSERR_NOERROR);
    EXPECT_EQ(Cards().InputRegister(0, Port::Analog, 0) & 0xC0, 0xC0);
    const auto signal = PlugIn(1000);
    Cards().ClearTrace();
    Add(4000);
    EXPECT_EQ(TraceText().back(), "QUEUE_BUFFER 1");
    recorder_.Start();
    Cards().Advance(Second / 10);
    const std::vector<BYTE> all = ClientBytes(PcmFormat(Rate, 2, 32), signal);
    EXPECT_TRUE(recorder_.Recorded() == std::vector<BYTE>(all.begin(), all.begin() + 4000));
    EXPECT_EQ(recorder_.Position(TIME_BYTES), 4000u);
}

TEST_F(InputControlTest, DirectModeLeavesNothingToDitherTo) {
    recorder_.Close();
    UnloadDriver();
    StoreSetting(0, TEXT("DitherADC"), 1);
    Open(Format());
    EXPECT_EQ(waveInMessage(recorder_.Handle(), 0x4002, 0, 0), MMSYSERR_NOERROR);
    EXPECT_EQ(recorder_.Add(4000), unsigned{MMSYSERR_INVALPARAM});
}

}  // namespace
