// What a client hears and gets back when requests fail. tests/reliability lets every request fail, and
// completions go astray.
#include "tests/support/output_test.h"

namespace {

class StreamFailureTest : public OutputTest {
protected:
    void Write(unsigned buffers) {
        for (unsigned i = 0; i < buffers; ++i) {
            const auto seed = static_cast<unsigned>(player_.HeaderCount()) + 1;
            ASSERT_EQ(player_.Write(Pattern(4000, seed)), MMSYSERR_NOERROR);
        }
    }
    void ExpectPlayed(const std::vector<unsigned>& seeds) {
        std::vector<BYTE> all;
        for (const unsigned seed : seeds) {
            const std::vector<BYTE> data = Pattern(4000, seed);
            all.insert(all.end(), data.begin(), data.end());
        }
        EXPECT_TRUE(Played() == Sound(format_, all)) << Played().size() << " frames";
    }
    void CloseAndForget() {
        EXPECT_EQ(waveOutReset(player_.Handle()), MMSYSERR_NOERROR);
        EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR);
        ExpectEachReturnedOnce();
        Cards().ClearFaults();
        player_.Forget();
        Cards().ForgetAudio();
    }

    const WaveFormat format_ = PcmFormat(44100, 2, 16);
};

TEST_F(StreamFailureTest, ABufferThatIsNotTakenComesBackAndTheOthersPlay) {
    for (const char* request : {"BEGIN_BUFFER", "MAP_BUFFER", "SET_BUFFER_COOKIE", "QUEUE_BUFFER"}) {
        for (const unsigned nth : {1u, 3u, 14u, 0u}) {  // 0: each of them
            SCOPED_TRACE(testing::Message() << request << " " << nth);
            ASSERT_EQ(player_.Open(AnalogOut, format_), MMSYSERR_NOERROR);
            Fail(request, nth);
            Write(15);
            Cards().Advance(Second);
            ExpectEachReturnedOnce();
            std::vector<unsigned> taken;
            for (unsigned seed = 1; seed <= 15 && nth != 0; ++seed) {
                if (seed != nth) {
                    taken.push_back(seed);
                }
            }
            ExpectPlayed(taken);
            EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR) << "nothing is in flight";
            Cards().ClearFaults();
            player_.Forget();
            Cards().ForgetAudio();
        }
    }
}

// A client that writes each returned buffer again must not get into a nest of callbacks, not even when
// there is no thread to return them on.
TEST_F(StreamFailureTest, AClientThatTriesAgainDoesNotNest) {
    constexpr unsigned Turns = 500;
    waveOutGetNumDevs();
    for (const bool served : {true, false}) {
        SCOPED_TRACE(served);
        if (!served) {
            test_system::FailCall("CreateThread", 1);
        }
        ASSERT_EQ(player_.Open(AnalogOut, format_), MMSYSERR_NOERROR);
        int depth = 0;
        int deepest = 0;
        player_.OnDone([&](WAVEHDR& header) {
            deepest = std::max(deepest, ++depth);
            if (player_.DoneCount() < Turns) {
                EXPECT_EQ(waveOutWrite(player_.Handle(), &header, sizeof header), MMSYSERR_NOERROR);
            }
            --depth;
        });
        Fail("QUEUE_BUFFER", 0);
        Write(1);
        for (int i = 0; i < 100 && player_.DoneCount() < Turns; ++i) {
            Cards().Advance(Second);  // waits for the service thread, but on a slow machine not until the end
        }
        EXPECT_EQ(player_.DoneCount(), Turns);
        EXPECT_EQ(deepest, 1);
        player_.OnDone(nullptr);
        Cards().ClearFaults();
        EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR);
        player_.Forget();
    }
}

// Nor is a channel armed whose transfer has not started.
TEST_F(StreamFailureTest, AStartThatFailsLosesNothing) {
    for (const char* request : {"START_TRANSFER", "ARM_CHANNEL"}) {
        SCOPED_TRACE(request);
        ASSERT_EQ(player_.Open(AnalogOut, format_), MMSYSERR_NOERROR);
        Cards().ClearTrace();
        Fail(request, 0);
        Write(3);
        Cards().Advance(Second);
        ExpectPlayed({});
        const std::vector<std::string> lines = TraceText();
        EXPECT_EQ(std::count(lines.begin(), lines.end(), "ARM_CHANNEL"), *request == 'A' ? 1 : 0);
        Cards().ClearFaults();
        EXPECT_EQ(waveOutPause(player_.Handle()), MMSYSERR_NOERROR);
        EXPECT_EQ(waveOutRestart(player_.Handle()), MMSYSERR_NOERROR);
        Cards().Advance(Second);
        ExpectPlayed({1, 2, 3});
        CloseAndForget();
    }
}

// Streams of one clock start together; one that could not start must not confuse the count of those.
TEST_F(StreamFailureTest, AStartThatFailedDoesNotPartLaterStreams) {
    ASSERT_EQ(player_.Open(AnalogOut, format_), MMSYSERR_NOERROR);
    Fail("START_TRANSFER");
    Write(1);
    CloseAndForget();
    WavePlayer digital;
    ASSERT_EQ(player_.Open(AnalogOut, format_), MMSYSERR_NOERROR);
    ASSERT_EQ(digital.Open(DigitalOut, format_), MMSYSERR_NOERROR);
    Write(1);
    Cards().Advance(Second / 100);
    ASSERT_EQ(digital.Write(Pattern(4000)), MMSYSERR_NOERROR);
    Cards().Advance(Second);
    EXPECT_TRUE(Output().Started);
    EXPECT_EQ(Output().StartFrame, Cards().Output(0, simulator::Port::Digital).StartFrame);
    EXPECT_EQ(digital.Close(), MMSYSERR_NOERROR);
}

// A card that vanishes takes no header with it.
TEST_F(StreamFailureTest, TheCardVanishes) {
    ASSERT_EQ(player_.Open(AnalogOut, format_), MMSYSERR_NOERROR);
    Write(20);
    Cards().Advance(Second / 10);
    Cards().SetPresent(0, false);
    Write(2);
    Cards().Advance(Second);
    EXPECT_EQ(player_.Position(), 0xFFFFFFFF);
    CloseAndForget();
    Cards().SetPresent(0, true);
}

}  // namespace
