// What a client hears and gets back when requests fail. tests/reliability lets every request fail, and
// completions go astray.
#include <atomic>

#include "tests/support/output_test.h"

namespace {

using StreamFailureTest = OutputTest;

TEST_F(StreamFailureTest, ABufferThatIsNotTakenComesBackAndTheOthersPlay) {
    for (const char* request : {"BEGIN_BUFFER", "MAP_BUFFER", "SET_BUFFER_COOKIE", "QUEUE_BUFFER"}) {
        for (const unsigned nth : {1u, 3u, 14u, 0u}) {  // 0: each of them
            SCOPED_TRACE(testing::Message() << request << " " << nth);
            Open();
            Fail(request, nth);
            for (unsigned i = 1; i <= 15; ++i) {
                Write();
                if (i == nth || nth == 0) {
                    written_.resize(written_.size() - BufferSize);
                }
            }
            ExpectAllPlayed();
            CloseAndForget();
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
        Open();
        std::atomic<int> depth = 0;
        std::atomic<int> deepest = 0;
        player_.OnDone([&](WAVEHDR& header) {
            deepest = std::max(deepest.load(), ++depth);
            if (player_.DoneCount() < Turns) {
                EXPECT_EQ(player_.HandIn(header), MMSYSERR_NOERROR);
            }
            --depth;
        });
        Fail("QUEUE_BUFFER", 0);
        Write(1);
        for (int i = 0; i == 0 || (i < 100 && player_.DoneCount() < Turns); ++i) {
            Cards().Advance(Second);  // waits for the service thread, but on a slow machine not until the end
        }
        EXPECT_EQ(player_.DoneCount(), Turns);
        EXPECT_EQ(deepest.load(), 1);
        EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR);
        player_.Forget();
        Cards().ClearFaults();
    }
}

// Nor is a channel armed whose transfer has not started.
TEST_F(StreamFailureTest, AStartThatFailsLosesNothing) {
    for (const char* request : {"START_TRANSFER", "ARM_CHANNEL"}) {
        SCOPED_TRACE(request);
        Open();
        Cards().ClearTrace();
        Fail(request, 0);
        Write(3);
        Cards().Advance(Second);
        EXPECT_TRUE(Played().empty());
        const Lines lines = TraceText();
        EXPECT_EQ(std::count(lines.begin(), lines.end(), "ARM_CHANNEL"), *request == 'A' ? 1 : 0);
        Cards().ClearFaults();
        EXPECT_EQ(player_.Stop(), MMSYSERR_NOERROR);
        EXPECT_EQ(player_.Start(), MMSYSERR_NOERROR);
        ExpectAllPlayed();
        CloseAndForget();
    }
}

// A card that vanishes takes no header with it.
TEST_F(StreamFailureTest, TheCardVanishes) {
    Open();
    Write(20);
    Cards().Advance(Second / 10);
    Cards().SetPresent(0, false);
    Write(2);
    Cards().Advance(Second);
    EXPECT_EQ(player_.Position(), 0xFFFFFFFF);
    EXPECT_EQ(player_.Reset(), MMSYSERR_NOERROR);
    CloseAndForget();
    Cards().SetPresent(0, true);
}

}  // namespace
