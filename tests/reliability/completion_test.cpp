// Completions that come late, again, out of their order, for headers that are gone, or never: none is
// believed that has no buffer in the card behind it, and no header waits for one that does not come.
#include <algorithm>

#include "tests/reliability/client.h"
#include "tests/support/driver_test.h"
#include "tests/support/system.h"
#include "tests/support/wave_sound.h"

namespace {

using simulator::Fault;
using simulator::Port;

constexpr int64_t Millisecond = 1000;
constexpr size_t BufferSize = 4000;  // of 1000 frames, 23 ms

class CompletionTest : public DriverTest {
protected:
    void Write(Player& player, unsigned buffers, size_t size = BufferSize) {
        for (unsigned i = 0; i < buffers; ++i) {
            player.HandedIn(player.Wave.Write(Pattern(size, i)));
        }
    }
    void Fail(Fault::Kind kind, unsigned nth, int64_t delay = 0) {
        Cards().AddFault({.What = kind, .Code = Fault::Completion, .Nth = nth, .Delay = delay});
        tally::Add(tally::Faults, 1);
    }

    // The close ends; what is still on its way then finds nothing any more.
    void ExpectTheEnd(Player& player) {
        player.Wave.OnDone(nullptr);
        player.Close();
        const unsigned done = player.Wave.DoneCount();
        Cards().Advance(10 * Second);
        EXPECT_EQ(player.Wave.DoneCount(), done);
        Cards().ClearFaults();
        Cards().ForgetAudio();
    }

    const WaveFormat format_ = PcmFormat(44100, 2, 16);
};

TEST_F(CompletionTest, OutOfOrder) {
    Player player;
    ASSERT_TRUE(player.Open(0, format_));
    for (const auto& [nth, milliseconds] : {std::pair{2u, 60}, {5u, 90}, {6u, 30}}) {
        Fail(Fault::Kind::Late, nth, milliseconds * Millisecond);
    }
    Write(player, 20);
    Cards().Advance(2 * Second);
    const std::vector<size_t> order = player.Wave.DoneOrder();
    EXPECT_EQ(order.size(), 20u);
    EXPECT_FALSE(std::is_sorted(order.begin(), order.end()));
    EXPECT_EQ(Cards().Played(0, Port::Analog).size(), 20000u) << "the card was kept fed all the same";
    ExpectTheEnd(player);
    player.ExpectBalance();
}

// A client that hands each header in again meets the second completion of its last turn: whichever is
// believed, a turn ends once.
TEST_F(CompletionTest, DuplicateForAHeaderThatIsInTheCardAgain) {
    for (const int64_t delay : {1 * Millisecond, 20 * Millisecond, 300 * Millisecond}) {
        SCOPED_TRACE(delay);
        Player player;
        ASSERT_TRUE(player.Open(0, format_));
        unsigned turns = 6;
        player.Wave.OnDone([&](WAVEHDR& header) {
            if (turns < 300) {
                ++turns;
                Always(waveOutWrite(player.Wave.Handle(), &header, sizeof header));
            }
        });
        Fail(Fault::Kind::Again, 0, delay);
        Write(player, 6, 400);
        Cards().Advance(10 * Second);
        EXPECT_EQ(turns, 300u);
        EXPECT_EQ(player.Wave.DoneCount(), turns);
        ExpectTheEnd(player);
        EXPECT_EQ(player.Wave.DoneCount(), turns);
    }
}

// Those of the buffers that a reset took out of the card come after it: before, while or after the device
// closes.
TEST_F(CompletionTest, AfterTheReset) {
    struct Case {
        int64_t Delay;
        int64_t Pause;  // between reset and close
        bool Known;     // they are waited for
    };
    for (const Case& test : {Case{50 * Millisecond, 200 * Millisecond, true},
                             Case{50 * Millisecond, 0, false}, Case{5 * Second, 100 * Millisecond, false}}) {
        SCOPED_TRACE(testing::Message() << test.Delay << " " << test.Pause);
        Player player;
        ASSERT_TRUE(player.Open(0, format_));
        Fail(Fault::Kind::Late, 0, test.Delay);
        Write(player, 20);
        Cards().Advance(10 * Millisecond);
        Always(waveOutReset(player.Wave.Handle()));
        EXPECT_LT(player.Wave.DoneCount(), 20u);
        Cards().Advance(test.Pause);
        EXPECT_EQ(player.Wave.DoneCount() == 20, test.Known);
        ExpectTheEnd(player);
        player.ExpectBalance();
    }
}

// The same for a recording: buffers that come back late still hold what belongs into them.
TEST_F(CompletionTest, OutOfOrderOfARecording) {
    const std::vector<simulator::Frame> signal = NoiseFrames(8000);
    Cards().PlugIn(0, Port::Analog, simulator::InputSignal::Run(signal));
    Recorder recorder;
    ASSERT_TRUE(recorder.Open(0, format_));
    Fail(Fault::Kind::Late, 0, 200 * Millisecond);
    for (unsigned i = 0; i < 8; ++i) {
        recorder.HandedIn(recorder.Wave.Add(BufferSize));
    }
    Always(recorder.Wave.Start());
    Cards().Advance(Second);
    recorder.Close();
    recorder.ExpectBalance();
    EXPECT_TRUE(recorder.Wave.Recorded() == ClientBytes(format_, signal));
}

// Without a single one the device cannot be closed but after a reset, which brings everything back.
TEST_F(CompletionTest, None) {
    Player player;
    ASSERT_TRUE(player.Open(0, format_));
    Fail(Fault::Kind::Lost, 0);
    Write(player, 20);
    Cards().Advance(Second);
    EXPECT_EQ(player.Wave.DoneCount(), 0u);
    EXPECT_EQ(player.Wave.Close(), static_cast<MMRESULT>(WAVERR_STILLPLAYING));
    ExpectTheEnd(player);
    player.ExpectBalance();
}

// A header whose memory the client has given away while the card had it: it is not touched any more, and the
// others come back.
TEST_F(CompletionTest, ForAHeaderThatTheClientHasFreed) {
    Player player;
    ASSERT_TRUE(player.Open(0, format_));
    Write(player, 2);
    std::vector<BYTE> data = Pattern(BufferSize);
    auto* header = static_cast<WAVEHDR*>(test_system::TakePage());
    *header = {};
    header->lpData = reinterpret_cast<LPSTR>(data.data());
    header->dwBufferLength = BufferSize;
    Always(waveOutPrepareHeader(player.Wave.Handle(), header, sizeof *header));
    Always(waveOutWrite(player.Wave.Handle(), header, sizeof *header));
    test_system::GiveBackPage(header);
    Cards().Advance(Second);
    EXPECT_EQ(player.Wave.DoneCount(), 2u);
    EXPECT_EQ(player.Wave.Close(), MMSYSERR_NOERROR) << "nothing is in the card";
    player.ExpectBalance();
}

// Five thousand in one wake-up, each of them twice, while the service thread is busy in a callback; with and
// without memory to collect them.
TEST_F(CompletionTest, ThousandsAtOnce) {
    constexpr unsigned Buffers = 5000;
    WaveFormat format = format_;
    format.Basic().nAvgBytesPerSec = 0x7FFFFFFF;  // as many in the card as there are
    for (const unsigned failing : {0u, 1u, 2u}) {
        SCOPED_TRACE(testing::Message() << "allocation " << failing << " of their collection fails");
        Player player;
        ASSERT_TRUE(player.Open(0, format));
        Fail(Fault::Kind::Twice, 0);
        player.Wave.OnDone([&](WAVEHDR& header) {
            if (header.dwUser != 0) {
                return;
            }
            Always(waveOutReset(player.Wave.Handle()));
            if (failing != 0) {
                test_system::FailCall("HeapAlloc", failing);
            }
        });
        Always(waveOutPause(player.Wave.Handle()));
        Write(player, Buffers, 40);
        EXPECT_EQ(Cards().Output(0, Port::Analog).BuffersInFlight, Buffers);
        Always(waveOutRestart(player.Wave.Handle()));
        for (int i = 0; i < 100 && player.Wave.DoneCount() < Buffers; ++i) {
            Cards().Advance(Second);  // waits for the service thread, but on a slow machine not until the end
        }
        EXPECT_EQ(player.Wave.DoneCount(), Buffers);
        test_system::ClearCallFailures();
        ExpectTheEnd(player);
        player.ExpectBalance();
    }
}

}  // namespace
