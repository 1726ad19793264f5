// The computer sleeps and wakes while both directions are in use on two cards at different rates.
#include "tests/support/power_test.h"

#include <algorithm>
#include <map>

#include "tests/support/wave_player.h"
#include "tests/support/wave_recorder.h"
#include "tests/support/wave_sound.h"

namespace {

using simulator::Frame;
using simulator::InputSignal;
using simulator::Port;

constexpr DWORD Rates[] = {48000, 96000};

enum class Playback { Playing, Paused, Stopped };
enum class Recording { Running, Stopped };

class SuspendTest : public PowerTest {
protected:
    void SetUp() override { waveOutGetNumDevs(); }
};

// One card's two clients in some state. Both have several buffers, of which the card has taken a part when
// it goes to sleep.
class Clients {
public:
    Clients(simulator::Simulator& cards, unsigned card, Playback playback, Recording recording)
        : cards_(cards), card_(card), playback_(playback), recording_(recording) {}

    void Begin() {
        ASSERT_EQ(player_.Open(2 * card_, playFormat_), MMSYSERR_NOERROR);
        ASSERT_EQ(recorder_.Open(2 * card_, recordFormat_), MMSYSERR_NOERROR);
        registers_ = Registers();
        PlugIn(1);
        for (size_t i = 0; i < Buffers; ++i) {
            ASSERT_EQ(recorder_.Add(BufferFrames * 3), MMSYSERR_NOERROR);
        }
        recorder_.Start();
        if (playback_ != Playback::Stopped) {
            Write();
        }
    }
    void Halt() {
        if (playback_ == Playback::Paused) {
            waveOutPause(player_.Handle());
        }
        if (recording_ == Recording::Stopped) {
            recorder_.Stop();
        }
    }
    void FallAsleep() {
        framesPlayed_ = cards_.Played(card_, Port::Analog).size();
        bytesRecorded_ = recorder_.Recorded().size();
        PlugIn(2);
    }
    void ExpectAwake() {
        EXPECT_EQ(Registers(), registers_);
        EXPECT_EQ(cards_.SampleRate(card_), Rates[card_]);
    }
    // Who was running runs; the others are set going now.
    void ExpectOldState() {
        EXPECT_EQ(cards_.Played(card_, Port::Analog).size() > framesPlayed_, playback_ == Playback::Playing);
        EXPECT_EQ(recorder_.Recorded().size() > bytesRecorded_, recording_ == Recording::Running);
        if (playback_ == Playback::Paused) {
            waveOutRestart(player_.Handle());
        } else if (playback_ == Playback::Stopped) {
            Write();
        }
        if (recording_ == Recording::Stopped) {
            recorder_.Start();
        }
    }
    // Everything was played, and recorded from two signals.
    void ExpectComplete() {
        EXPECT_TRUE(cards_.Played(card_, Port::Analog) == Sound(playFormat_, played_));
        player_.ExpectEachReturnedOnce();
        recorder_.ExpectEachReturnedOnce();
        std::vector<BYTE> expected = ClientBytes(recordFormat_, Signal(1));
        expected.resize(bytesRecorded_);
        const std::vector<BYTE> rest = ClientBytes(recordFormat_, Signal(2));
        expected.insert(expected.end(), rest.begin(), rest.end());
        const std::vector<BYTE> recorded = recorder_.Recorded();
        ASSERT_LE(recorded.size(), expected.size());
        EXPECT_GT(recorded.size(), (Buffers - 1) * BufferFrames * 3);
        EXPECT_TRUE(std::equal(recorded.begin(), recorded.end(), expected.begin()));
        EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR);
    }

private:
    static constexpr size_t Buffers = 8;
    static constexpr size_t BufferFrames = 6000;

    static std::vector<Frame> Signal(unsigned seed) { return NoiseFrames(Buffers * BufferFrames, seed); }
    void PlugIn(unsigned seed) { cards_.PlugIn(card_, Port::Analog, InputSignal::Run(Signal(seed))); }
    void Write() {
        for (size_t i = 0; i < Buffers; ++i) {
            const std::vector<BYTE> data = Pattern(BufferFrames * 4, static_cast<unsigned>(i));
            ASSERT_EQ(player_.Write(data), MMSYSERR_NOERROR);
            played_.insert(played_.end(), data.begin(), data.end());
        }
    }
    // All but those that only say where the last access was or what was measured.
    std::map<std::string, unsigned> Registers() {
        std::map<std::string, unsigned> values;
        for (const simulator::RegisterView& view : cards_.Registers(card_)) {
            if (view.Name.find("index") == std::string::npos &&
                view.Name.find("measured") == std::string::npos) {
                values[view.File + " " + std::to_string(view.Index)] = view.Value;
            }
        }
        return values;
    }

    simulator::Simulator& cards_;
    const unsigned card_;
    const Playback playback_;
    const Recording recording_;
    const WaveFormat playFormat_ = PcmFormat(Rates[card_], 2, 16);
    const WaveFormat recordFormat_ = PcmFormat(Rates[card_], 1, 24);
    WavePlayer player_;
    WaveRecorder recorder_;
    std::map<std::string, unsigned> registers_;
    std::vector<BYTE> played_;
    size_t framesPlayed_ = 0;
    size_t bytesRecorded_ = 0;
};

TEST_F(SuspendTest, EveryStateOutlastsTheSleep) {
    for (const Playback playback : {Playback::Playing, Playback::Paused, Playback::Stopped}) {
        for (const Recording recording : {Recording::Running, Recording::Stopped}) {
            SCOPED_TRACE(testing::Message() << "playback " << static_cast<int>(playback) << ", recording "
                                            << static_cast<int>(recording));
            Clients first(Cards(), 0, playback, recording);
            Clients second(Cards(), 1, playback, recording);
            const auto both = [&](void (Clients::*act)(), int64_t then) {
                (first.*act)();
                (second.*act)();
                Cards().Advance(then);
            };
            both(&Clients::Begin, Second / 5);
            both(&Clients::Halt, Second / 100);
            Sleep();
            both(&Clients::FallAsleep, Second);
            EXPECT_EQ(SendPower(PWR_SUSPENDRESUME), 1);
            both(&Clients::ExpectAwake, Second / 4);
            both(&Clients::ExpectOldState, 3 * Second);
            both(&Clients::ExpectComplete, 0);
            Cards().ForgetAudio();
        }
    }
}

// What the client asks for during the sleep is what it finds after it.
TEST_F(SuspendTest, RestartAndPauseDuringTheSleepHoldAfterIt) {
    WavePlayer player;
    const WaveFormat format = PcmFormat(44100, 2, 16);
    ASSERT_EQ(player.Open(0, format), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutPause(player.Handle()), MMSYSERR_NOERROR);
    ASSERT_EQ(player.Write(Pattern(40000)), MMSYSERR_NOERROR);
    Sleep();
    EXPECT_EQ(waveOutRestart(player.Handle()), MMSYSERR_NOERROR);
    SendPower(PWR_SUSPENDRESUME);
    Cards().Advance(Second / 10);
    EXPECT_TRUE(Cards().Output(0, Port::Analog).Started);
    Sleep();
    EXPECT_EQ(waveOutPause(player.Handle()), MMSYSERR_NOERROR);
    SendPower(PWR_SUSPENDRESUME);
    Cards().Advance(Second);
    EXPECT_EQ(player.DoneCount(), 0u) << "the port was paused";
    EXPECT_EQ(waveOutRestart(player.Handle()), MMSYSERR_NOERROR);
    Cards().Advance(Second);
    EXPECT_EQ(Cards().Played(0, Port::Analog), Sound(format, Pattern(40000)));
    player.ExpectEachReturnedOnce();
}

TEST_F(SuspendTest, AResumeWithoutStreamsInitialisesEveryEnabledCard) {
    Cards().PowerCycle(0);
    Cards().PowerCycle(1);
    EXPECT_EQ(SendPower(PWR_SUSPENDRESUME), 1);
    for (unsigned card = 0; card < 2; ++card) {
        EXPECT_EQ(Cards().MixerGain(card, 2), 0u) << "old values are gone";
        EXPECT_EQ(Cards().CardRegister(card, 16) & 3, 0) << "and the connectors open";
    }
    EXPECT_EQ(Cards().OpenFiles(), 0u);
}

}  // namespace
