// The computer sleeps and wakes while both directions are in use on two cards at different rates.
#include <mmddk.h>

#include <algorithm>
#include <map>

#include "tests/support/driver_test.h"
#include "tests/support/system.h"
#include "tests/support/wave_player.h"
#include "tests/support/wave_recorder.h"
#include "tests/support/wave_sound.h"

namespace {

using simulator::Frame;
using simulator::InputSignal;
using simulator::Port;

constexpr int64_t Second = 1000000;
constexpr DWORD Rates[] = {48000, 96000};

enum class Playback { Playing, Paused, Stopped };
enum class Recording { Running, Stopped };

class SuspendTest : public DriverTest {
protected:
    SuspendTest() : DriverTest(2) {}

    void SetUp() override {
        waveOutGetNumDevs();
        driver_ = test_system::LoadDriver();
        driverProc_ = test_system::DriverEntry<DRIVERPROC>(driver_, "DriverProc");
        ASSERT_NE(driverProc_, nullptr);
    }
    void TearDown() override {
        FreeLibrary(driver_);
        DriverTest::TearDown();
    }

    LRESULT SendPower(LPARAM event) { return driverProc_(0, nullptr, DRV_POWER, event, 0); }

    // Every register of a card but those that only say where the last access was or what was measured.
    std::map<std::string, unsigned> Registers(unsigned card) {
        std::map<std::string, unsigned> values;
        for (const simulator::RegisterView& view : Cards().Registers(card)) {
            if (view.Name.find("index") == std::string::npos &&
                view.Name.find("measured") == std::string::npos) {
                values[view.File + " " + std::to_string(view.Index)] = view.Value;
            }
        }
        return values;
    }

    void Sleep() {
        EXPECT_EQ(SendPower(PWR_SUSPENDREQUEST), 1);
        Cards().PowerCycle(0);
        Cards().PowerCycle(1);
        Cards().Advance(Second);
    }

    HMODULE driver_ = nullptr;
    DRIVERPROC driverProc_ = nullptr;
};

// One card's two clients. Both have several buffers, of which the card has taken a part when it goes to
// sleep.
class Clients {
public:
    static constexpr size_t Buffers = 8;
    static constexpr size_t BufferFrames = 6000;

    Clients(simulator::Simulator& cards, unsigned card)
        : cards_(cards),
          card_(card),
          playFormat_(PcmFormat(Rates[card], 2, 16)),
          recordFormat_(PcmFormat(Rates[card], 1, 24)) {}

    void Open() {
        ASSERT_EQ(player_.Open(2 * card_, playFormat_), MMSYSERR_NOERROR);
        ASSERT_EQ(recorder_.Open(2 * card_, recordFormat_), MMSYSERR_NOERROR);
    }
    void Begin(Playback playback) {
        PlugIn(1);
        for (size_t i = 0; i < Buffers; ++i) {
            ASSERT_EQ(recorder_.Add(BufferFrames * 3), MMSYSERR_NOERROR);
        }
        recorder_.Start();
        if (playback != Playback::Stopped) {
            Write();
        }
    }
    void Halt(Playback playback, Recording recording) {
        if (playback == Playback::Paused) {
            waveOutPause(player_.Handle());
        }
        if (recording == Recording::Stopped) {
            recorder_.Stop();
        }
    }
    void Resume(Playback playback, Recording recording) {
        if (playback == Playback::Paused) {
            waveOutRestart(player_.Handle());
        } else if (playback == Playback::Stopped) {
            Write();
        }
        if (recording == Recording::Stopped) {
            recorder_.Start();
        }
    }
    void PlugIn(unsigned seed) { cards_.PlugIn(card_, Port::Analog, InputSignal::Run(Signal(seed))); }

    uint64_t FramesPlayed() { return cards_.Played(card_, Port::Analog).size(); }
    size_t BytesRecorded() { return recorder_.Recorded().size(); }

    // Everything was played, and recorded from two signals, the second one beginning at `second` bytes.
    void ExpectComplete(size_t second) {
        EXPECT_TRUE(cards_.Played(card_, Port::Analog) == Sound(playFormat_, played_));
        ExpectOnce(player_.HeaderCount(), [this](size_t i) { return player_.DoneCount(i); });
        ExpectOnce(recorder_.HeaderCount(), [this](size_t i) { return recorder_.DoneCount(i); });
        std::vector<BYTE> expected = ClientBytes(recordFormat_, Signal(1));
        expected.resize(second);
        const std::vector<BYTE> rest = ClientBytes(recordFormat_, Signal(2));
        expected.insert(expected.end(), rest.begin(), rest.end());
        const std::vector<BYTE> recorded = recorder_.Recorded();
        ASSERT_LE(recorded.size(), expected.size());
        EXPECT_GT(recorded.size(), (Buffers - 1) * BufferFrames * 3);
        EXPECT_TRUE(std::equal(recorded.begin(), recorded.end(), expected.begin()));
    }
    void Close() {
        EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR);
        recorder_.Reset();
        EXPECT_EQ(recorder_.Close(), MMSYSERR_NOERROR);
    }

private:
    static std::vector<Frame> Signal(unsigned seed) { return NoiseFrames(Buffers * BufferFrames, seed); }
    void Write() {
        for (size_t i = 0; i < Buffers; ++i) {
            const std::vector<BYTE> data = Pattern(BufferFrames * 4, static_cast<unsigned>(i));
            ASSERT_EQ(player_.Write(data), MMSYSERR_NOERROR);
            played_.insert(played_.end(), data.begin(), data.end());
        }
    }
    template <typename DoneCount>
    static void ExpectOnce(size_t count, DoneCount doneCount) {
        for (size_t i = 0; i < count; ++i) {
            EXPECT_EQ(doneCount(i), 1u) << "header " << i;
        }
    }

    simulator::Simulator& cards_;
    unsigned card_;
    WaveFormat playFormat_;
    WaveFormat recordFormat_;
    WavePlayer player_;
    WaveRecorder recorder_;
    std::vector<BYTE> played_;
};

TEST_F(SuspendTest, EveryStateOutlastsTheSleep) {
    for (const Playback playback : {Playback::Playing, Playback::Paused, Playback::Stopped}) {
        for (const Recording recording : {Recording::Running, Recording::Stopped}) {
            SCOPED_TRACE(testing::Message() << "playback " << static_cast<int>(playback) << ", recording "
                                            << static_cast<int>(recording));
            Clients clients[] = {{Cards(), 0}, {Cards(), 1}};
            std::map<std::string, unsigned> before[2];
            for (unsigned card = 0; card < 2; ++card) {
                clients[card].Open();
                before[card] = Registers(card);
            }
            for (Clients& client : clients) {
                client.Begin(playback);
            }
            Cards().Advance(Second / 5);
            for (Clients& client : clients) {
                client.Halt(playback, recording);
            }
            Cards().Advance(Second / 100);

            Sleep();
            uint64_t played[2];
            size_t recorded[2];
            for (unsigned card = 0; card < 2; ++card) {
                played[card] = clients[card].FramesPlayed();
                recorded[card] = clients[card].BytesRecorded();
                clients[card].PlugIn(2);
            }
            Cards().Advance(Second);
            EXPECT_EQ(SendPower(PWR_SUSPENDRESUME), 1);
            for (unsigned card = 0; card < 2; ++card) {
                SCOPED_TRACE(testing::Message() << "card " << card);
                EXPECT_EQ(Registers(card), before[card]);
                EXPECT_EQ(Cards().SampleRate(card), Rates[card]);
            }
            Cards().Advance(Second / 4);
            for (unsigned card = 0; card < 2; ++card) {
                SCOPED_TRACE(testing::Message() << "card " << card);
                EXPECT_EQ(clients[card].FramesPlayed() > played[card], playback == Playback::Playing);
                EXPECT_EQ(clients[card].BytesRecorded() > recorded[card], recording == Recording::Running);
                clients[card].Resume(playback, recording);
            }
            Cards().Advance(3 * Second);
            for (unsigned card = 0; card < 2; ++card) {
                SCOPED_TRACE(testing::Message() << "card " << card);
                clients[card].ExpectComplete(recorded[card]);
                clients[card].Close();
            }
            Cards().ForgetAudio();
        }
    }
}

// What the client does while the computer sleeps waits for the morning.
TEST_F(SuspendTest, BuffersAddedDuringTheSleepAreFilledAfterIt) {
    const WaveFormat format = PcmFormat(48000, 2, 16);
    WaveRecorder recorder;
    ASSERT_EQ(recorder.Open(0, format), MMSYSERR_NOERROR);
    recorder.Start();
    Cards().Advance(1000);
    SendPower(PWR_SUSPENDREQUEST);
    Cards().PowerCycle(0);
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(recorder.Add(4000), MMSYSERR_NOERROR);
    }
    Cards().Advance(Second);
    EXPECT_EQ(recorder.DoneCount(), 0u);
    const std::vector<Frame> signal = NoiseFrames(3000);
    Cards().PlugIn(0, Port::Analog, InputSignal::Run(signal));
    SendPower(PWR_CRITICALRESUME);
    Cards().Advance(Second);
    EXPECT_TRUE(recorder.Recorded() == ClientBytes(format, signal));
    EXPECT_EQ(recorder.DoneCount(), 3u);
}

// A recording started during the sleep runs after it; one that was reset and closed leaves nothing behind.
TEST_F(SuspendTest, ResetAndCloseDuringTheSleep) {
    const WaveFormat format = PcmFormat(96000, 1, 16);
    WaveRecorder recorder;
    ASSERT_EQ(recorder.Open(2, format), MMSYSERR_NOERROR);
    ASSERT_EQ(recorder.Add(40000), MMSYSERR_NOERROR);
    recorder.Start();
    Cards().Advance(1000);
    Sleep();
    EXPECT_EQ(recorder.Reset(), MMSYSERR_NOERROR);
    EXPECT_EQ(recorder.Close(), MMSYSERR_NOERROR);
    EXPECT_EQ(recorder.DoneCount(0), 1u);
    EXPECT_EQ(SendPower(PWR_SUSPENDRESUME), 1);
    ASSERT_EQ(recorder.Open(2, format), MMSYSERR_NOERROR);
    ASSERT_EQ(recorder.Add(400), MMSYSERR_NOERROR);
    Sleep();
    EXPECT_EQ(SendPower(PWR_SUSPENDRESUME), 1);
    Cards().Advance(Second);
    EXPECT_FALSE(Cards().Input(1, Port::Analog).Started) << "it was not recording";
    recorder.Start();
    Cards().Advance(Second);
    EXPECT_EQ(recorder.DoneCount(1), 1u);
}

// The clock from outside is gone in the morning: the stream goes on with the card's own.
TEST_F(SuspendTest, ARecordingOutlastsItsClock) {
    const WaveFormat format = PcmFormat(48000, 2, 16);
    Cards().SetDigitalInputRate(0, 48000);
    WaveRecorder recorder;
    ASSERT_EQ(recorder.Open(1, format), MMSYSERR_NOERROR);
    EXPECT_EQ(Cards().CardRegister(0, 32) & 0x60, 0x40);
    for (int i = 0; i < 4; ++i) {
        ASSERT_EQ(recorder.Add(48000), MMSYSERR_NOERROR);
    }
    recorder.Start();
    Cards().Advance(Second / 10);
    Cards().SetDigitalInputRate(0, 0);
    Sleep();
    EXPECT_EQ(SendPower(PWR_SUSPENDRESUME), 1);
    EXPECT_EQ(Cards().CardRegister(0, 32) & 0x60, 0);
    Cards().Advance(2 * Second);
    EXPECT_EQ(recorder.DoneCount(), 4u);
}

TEST_F(SuspendTest, APlaybackOutlastsItsClock) {
    StoreSetting(0, TEXT("ClockSource"), 96);
    FreeLibrary(driver_);
    UnloadDriver();
    SetUp();
    const WaveFormat format = PcmFormat(96000, 1, 24);
    const std::vector<BYTE> data = Pattern(96000 * 3);
    WavePlayer player;
    ASSERT_EQ(player.Open(0, format), MMSYSERR_NOERROR);
    ASSERT_EQ(player.Write(data), MMSYSERR_NOERROR);
    Cards().Advance(Second / 10);
    Cards().SetClockBroken(0, 0x60, true);
    Sleep();
    EXPECT_EQ(SendPower(PWR_SUSPENDRESUME), 1);
    EXPECT_EQ(Cards().SampleRate(0), 96000u);
    Cards().Advance(2 * Second);
    EXPECT_TRUE(Cards().Played(0, Port::Analog) == Sound(format, data));
    EXPECT_EQ(player.DoneCount(), 1u);
    EXPECT_EQ(test_system::EventLog().size(), 1u) << "the clock's failure is logged";
}

TEST_F(SuspendTest, OtherEventsDoNothing) {
    WaveRecorder recorder;
    ASSERT_EQ(recorder.Open(0, PcmFormat(48000, 2, 16)), MMSYSERR_NOERROR);
    Cards().ClearTrace();
    for (const LPARAM event : {0, 4, -1}) {
        EXPECT_EQ(SendPower(event), 1);
    }
    EXPECT_EQ(TraceText(), std::vector<std::string>());
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
