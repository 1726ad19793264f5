// Which clock a recording runs on.
#include "tests/clock/clock_script.h"

namespace {

constexpr DWORD Rate = 44100;

const WaveFormat Stereo = PcmFormat(Rate, 2, 16);

class RecordingClockTest : public WithCards<ClockTest, 2> {
protected:
    bool ReceiverIsOff() { return (Cards().InputRegister(0, Port::Digital, 1) & 1) != 0; }
};

TEST_F(RecordingClockTest, ADigitalRecordingAloneTakesItsSignalsClock) {
    WaveRecorder recorder;
    for (const DWORD rate : {44100u, 96000u, 32000u}) {
        Cards().SetDigitalInputRate(0, rate);
        ASSERT_EQ(recorder.Open(DigitalIn, PcmFormat(rate, 2, 16)), MMSYSERR_NOERROR);
        EXPECT_EQ(Source(0), Digital);
        EXPECT_EQ(Cards().SampleRate(0), rate);
        // What else is opened meanwhile changes nothing.
        WavePlayer player(0, PcmFormat(rate, 2, 16));
        EXPECT_EQ(Source(0), Digital);
        player.Shut();
        recorder.Shut();
        EXPECT_FALSE(ReceiverIsOff()) << "the card runs on it";
    }
    EXPECT_EQ(Events(), std::vector<DWORD>{});
}

TEST_F(RecordingClockTest, AnybodyElseRunsOnTheCardsOwnClock) {
    Cards().SetDigitalInputRate(0, Rate);
    WavePlayer player;
    WaveRecorder digital;
    WaveRecorder analog(AnalogIn, Stereo);
    EXPECT_EQ(Source(0), Internal);
    ASSERT_EQ(digital.Open(DigitalIn, Stereo), MMSYSERR_NOERROR);
    EXPECT_EQ(Source(0), Internal) << "it came second";
    FallAsleep();
    WakeUp();
    EXPECT_EQ(Source(0), Internal) << "but it is the first to wake up";
    digital.Shut();
    EXPECT_TRUE(ReceiverIsOff());
    analog.Shut();
    ASSERT_EQ(player.Open(0, Stereo), MMSYSERR_NOERROR);
    ASSERT_EQ(digital.Open(DigitalIn, Stereo), MMSYSERR_NOERROR);
    EXPECT_EQ(Source(0), Internal) << "it is not alone";
    FallAsleep();
    WakeUp();
    EXPECT_EQ(Source(0), Internal) << "nor when it is the first to wake up";
}

TEST_F(RecordingClockTest, InAGroupNobodyIsAlone) {
    Follow(1, 0);
    Cards().SetDigitalInputRate(1, Rate);
    WaveRecorder recorder(2 + DigitalIn, Stereo);
    EXPECT_EQ(Source(0), Internal);
    EXPECT_EQ(Source(1), Link);
}

}  // namespace
