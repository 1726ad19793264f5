// Requests that fail, completions that go astray and calls of the system that fail: whatever happens, a
// client gets each of its headers back once, and nothing stays behind.
#include "tests/support/output_test.h"

namespace {

using simulator::Fault;

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
    void ExpectAllBackAtClose() {
        EXPECT_EQ(waveOutReset(player_.Handle()), MMSYSERR_NOERROR);
        EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR);
        ExpectEachReturnedOnce();
        Cards().ClearFaults();
        player_.Forget();
        Cards().ForgetAudio();
    }

    const WaveFormat format_ = PcmFormat(44100, 2, 16);
};

constexpr const char* HandOverRequests[] = {"BEGIN_BUFFER", "MAP_BUFFER", "SET_BUFFER_COOKIE",
                                            "QUEUE_BUFFER"};

TEST_F(StreamFailureTest, ABufferThatIsNotTakenComesBackAndTheOthersPlay) {
    for (const char* request : HandOverRequests) {
        for (const unsigned nth : {1u, 3u, 14u}) {
            SCOPED_TRACE(testing::Message() << request << " " << nth);
            ASSERT_EQ(player_.Open(AnalogOut, format_), MMSYSERR_NOERROR);
            Fail(request, nth);
            Write(15);
            Cards().Advance(Second);
            ExpectEachReturnedOnce();
            std::vector<unsigned> others;
            for (unsigned seed = 1; seed <= 15; ++seed) {
                if (seed != nth) {
                    others.push_back(seed);
                }
            }
            ExpectPlayed(others);
            EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR);
            player_.Forget();
            Cards().ForgetAudio();
        }
    }
}

TEST_F(StreamFailureTest, WhenNoBufferIsTakenAllComeBack) {
    for (const char* request : HandOverRequests) {
        SCOPED_TRACE(request);
        ASSERT_EQ(player_.Open(AnalogOut, format_), MMSYSERR_NOERROR);
        Fail(request, 0);
        Write(100);
        Cards().Advance(Second);
        ExpectEachReturnedOnce();
        EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR) << "nothing is in flight";
        Cards().ClearFaults();
        player_.Forget();
    }
    ExpectPlayed({});
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

TEST_F(StreamFailureTest, AStartThatFailsLosesNothing) {
    for (const char* request : {"START_TRANSFER", "ARM_CHANNEL"}) {
        SCOPED_TRACE(request);
        ASSERT_EQ(player_.Open(AnalogOut, format_), MMSYSERR_NOERROR);
        Fail(request, 0);
        Write(3);
        Cards().Advance(Second);
        ExpectPlayed({});
        Cards().ClearFaults();
        EXPECT_EQ(waveOutPause(player_.Handle()), MMSYSERR_NOERROR);
        EXPECT_EQ(waveOutRestart(player_.Handle()), MMSYSERR_NOERROR);
        Cards().Advance(Second);
        ExpectPlayed({1, 2, 3});
        Fail(request, 0);
        Write(20);
        ExpectAllBackAtClose();
    }
}

// Streams of one clock start together; one that could not start must not confuse the count of those.
TEST_F(StreamFailureTest, AStartThatFailedDoesNotPartLaterStreams) {
    ASSERT_EQ(player_.Open(AnalogOut, format_), MMSYSERR_NOERROR);
    Fail("START_TRANSFER");
    Write(1);
    ExpectAllBackAtClose();
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

TEST_F(StreamFailureTest, AFlushThatFailsLosesNothing) {
    ASSERT_EQ(player_.Open(AnalogOut, format_), MMSYSERR_NOERROR);
    Fail("FLUSH_BUFFERS", 0);
    Fail("DISARM_CHANNEL", 0);
    Write(20);
    ExpectAllBackAtClose();
    ASSERT_EQ(player_.Open(AnalogOut, format_), MMSYSERR_NOERROR);
    Write(1);
    Cards().Advance(Second);
    ExpectPlayed({1});
}

TEST_F(StreamFailureTest, CompletionsAreLostLateOrDuplicated) {
    struct Case {
        const char* Name;
        Fault::Kind Kind;
        unsigned Nth;
        unsigned Done;  // when everything has been played
    };
    for (const Case& test :
         {Case{"one is lost", Fault::Kind::Lost, 3, 19}, Case{"each comes twice", Fault::Kind::Twice, 0, 20},
          Case{"one comes late", Fault::Kind::Late, 2, 20},
          Case{"all come late", Fault::Kind::Late, 0, 20}}) {
        SCOPED_TRACE(test.Name);
        ASSERT_EQ(player_.Open(AnalogOut, format_), MMSYSERR_NOERROR);
        Fail(Fault::Completion, test.Nth, test.Kind);
        Write(20);
        Cards().Advance(Second);
        EXPECT_EQ(player_.DoneCount(), test.Done);
        EXPECT_EQ(Played().size(), 20000u);
        ExpectAllBackAtClose();
    }
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
    ExpectAllBackAtClose();
    Cards().SetPresent(0, true);
}

}  // namespace
