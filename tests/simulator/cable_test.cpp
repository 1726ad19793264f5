// What cables bring to the inputs: sound, and a clock.
#include <algorithm>

#include "tests/simulator/card_file.h"
#include "tests/support/input_test.h"

namespace {

using simulator::Frame;
using simulator::InputSignal;
using simulator_tests::CardFile;

WaveFormat FullWidth(DWORD rate = 44100) {
    return PcmFormat(rate, 2, 32);
}

class CableTest : public InputTest {
protected:
    CableTest() : InputTest(3) {}

    // A recorder and a player, of that many frames each.
    void OpenBoth(UINT input, const WaveFormat& recorded, UINT output, const WaveFormat& played) {
        Open(recorded, input);
        ASSERT_EQ(player_.Open(output, played), MMSYSERR_NOERROR);
    }
    void Play(const std::vector<Frame>& frames) {
        EXPECT_EQ(player_.Write(ClientBytes(FullWidth(), frames)), MMSYSERR_NOERROR);
    }
    // Frames from the first one recorded on the card to the first one that card 0 played.
    size_t Apart(unsigned card, Port port = Port::Analog) {
        return static_cast<size_t>(Cards().Output(0, port).StartFrame - Cards().Input(card, port).StartFrame);
    }
    std::vector<Frame> Recorded() { return Sound(FullWidth(), recorder_.Recorded()); }
    // The signal, with silence before it and after it.
    static std::vector<Frame> Amid(size_t before, const std::vector<Frame>& signal, size_t all) {
        std::vector<Frame> frames(before);
        frames.insert(frames.end(), signal.begin(), signal.end());
        frames.resize(all);
        return frames;
    }

    WavePlayer player_;
};

TEST_F(CableTest, CarriesWhatTheOutputHearsAtThatFrame) {
    Follow(1, 0);
    for (const unsigned receiver : {0u, 1u}) {
        SCOPED_TRACE(receiver);
        Cards().PlugIn(receiver, Port::Analog, InputSignal::Cable(0, Port::Analog));
        Open(FullWidth(), 2 * receiver);
        CardFile(0, simulator::ControlChannel).SetGain(0, 0);  // no circle
        Add(4000 * 8);
        EXPECT_EQ(recorder_.Start(), MMSYSERR_NOERROR);
        Cards().Advance(7777);
        ASSERT_EQ(player_.Open(0, FullWidth()), MMSYSERR_NOERROR);
        Play(NoiseFrames(2000));
        Cards().Advance(15000);
        EXPECT_EQ(waveOutSetVolume(player_.Handle(), 0x8000), MMSYSERR_NOERROR);
        Cards().Advance(Second / 10);
        EXPECT_NE(Cards().Heard(0, Port::Analog), NoiseFrames(2000)) << "the volume was changed";
        EXPECT_EQ(Recorded(), Amid(Apart(receiver), Cards().Heard(0, Port::Analog), 4000));
        player_.Shut();
        CloseAndForget();
        Cards().ForgetAudio();
    }
}

TEST_F(CableTest, BetweenClocksGoesByTime) {
    constexpr DWORD Rates[] = {48000, 8000};
    for (const unsigned sender : {0u, 1u}) {
        SCOPED_TRACE(sender);
        const unsigned receiver = 1 - sender;
        Cards().PlugIn(receiver, Port::Analog, InputSignal::Cable(sender, Port::Analog));
        OpenBoth(2 * receiver, FullWidth(Rates[receiver]), 2 * sender, FullWidth(Rates[sender]));
        Add(Rates[receiver]);  // an eighth of a second
        EXPECT_EQ(recorder_.Start(), MMSYSERR_NOERROR);
        Play(simulator_tests::Ramp(Rates[sender] / 4));
        Cards().Advance(Second / 5);
        const std::vector<Frame> heard = Recorded();
        ASSERT_EQ(heard.size(), Rates[receiver] / 8);
        const auto first = static_cast<size_t>(
            std::ranges::find_if(heard, [](const Frame& frame) { return frame.Left != 0; }) - heard.begin());
        const double ratio = static_cast<double>(Rates[sender]) / Rates[receiver];
        for (size_t i = first; i < heard.size(); ++i) {
            ASSERT_NEAR(heard[i].Left / 256.0, static_cast<double>(i - first) * ratio, 2 * ratio + 2) << i;
        }
        player_.Shut();
        CloseAndForget();
    }
}

TEST_F(CableTest, PassesThroughMonitorsButNotInCircles) {
    Follow(1, 0);
    Follow(2, 0);
    OpenBoth(4, FullWidth(), 0, FullWidth());
    for (unsigned card = 0; card < 3; ++card) {
        CardFile(card, simulator::ControlChannel).SetGain(0, 128);
        Cards().PlugIn((card + 1) % 3, Port::Analog, InputSignal::Cable(card, Port::Analog));
    }
    Add(800 * 8);
    EXPECT_EQ(recorder_.Start(), MMSYSERR_NOERROR);
    const std::vector<Frame> once = NoiseFrames(400);
    Play(once);
    Cards().Advance(30000);
    EXPECT_EQ(Recorded(), Amid(Apart(2), once, 800));
    EXPECT_EQ(Cards().Heard(0, Port::Analog), once);
}

TEST_F(CableTest, ACardRunsOnTheClockThatADigitalOneBrings) {
    constexpr DWORD DigitalSource = 64;
    StoreSetting(1, TEXT("ClockSource"), DigitalSource);
    Cards().SetDrift(0, 123);
    Cards().PlugIn(1, Port::Digital, InputSignal::Cable(0, Port::Digital));
    OpenBoth(2 + DigitalIn, FullWidth(), DigitalOut, FullWidth());
    Add(10000 * 8);
    EXPECT_EQ(recorder_.Start(), MMSYSERR_NOERROR);
    Cards().Advance(3333);
    Play(NoiseFrames(5000));
    Cards().Advance(Second / 5);
    const size_t apart = Apart(1, Port::Digital);
    recorder_.Stop();
    Cards().Advance(1);
    const std::vector<Frame> recorded = Recorded();
    EXPECT_GT(recorded.size(), apart + 5000);
    EXPECT_EQ(recorded, Amid(apart, NoiseFrames(5000), recorded.size())) << "no frame slips";

    // The signal is lost with the transmitter, and the clock with it.
    const CardFile sender(0, simulator::ControlChannel);
    sender.WriteCard(25, 0, 1);
    EXPECT_EQ(Cards().SampleRate(1), 0u);
    Cards().Advance(100);
    sender.WriteCard(25, 1, 1);
    EXPECT_EQ(Cards().SampleRate(1), 44100u);

    // Two cards that run on each other's clock have none.
    player_.Shut();
    Cards().PlugIn(0, Port::Digital, InputSignal::Cable(1, Port::Digital));
    sender.WriteCard(9, 0, 1);
    Cards().Advance(50000);
    sender.WriteCard(9, 0, 2);
    sender.WriteCard(32, DigitalSource, 0x60);
    Cards().Advance(60000);
    EXPECT_EQ(Cards().SampleRate(0), 0u);
    EXPECT_EQ(Cards().SampleRate(1), 0u);
}

}  // namespace
