// What a buffer of a running stream costs: no memory, and few rounds of the mutex of all processes.
#include "tests/support/input_test.h"
#include "tests/support/output_test.h"

namespace {

constexpr unsigned Buffers = 8;
constexpr unsigned Rounds = 10;
constexpr unsigned MutexRounds = 3;  // when it is accepted, when it is handed over, when it has completed

// `runTo` lets the stream go on until so many buffers have come back.
template <typename RunTo>
void ExpectLittleTaken(RunTo runTo) {
    unsigned back = Rounds * Buffers;
    runTo(back);
    const unsigned long before = test_system::MutexReleases();
    back += Rounds * Buffers;
    runTo(back);
    EXPECT_LE(test_system::MutexReleases() - before, MutexRounds * Rounds * Buffers);
    for (const char* function : {"HeapAlloc", "GlobalAlloc", "GlobalReAlloc", "GlobalLock"}) {
        test_system::FailCall(function, 1);
        back += Rounds * Buffers;
        runTo(back);
        EXPECT_TRUE(test_system::CallFailuresAreWaiting()) << function << " was called";
        test_system::ClearCallFailures();
    }
}

class PlaybackTurnAround : public OutputTest {};
class CaptureTurnAround : public InputTest {};

TEST_F(PlaybackTurnAround, TakesNoMemoryAndFewRounds) {
    for (const WORD bits : {WORD{16}, WORD{24}}) {  // given to the card as it is, and converted
        SCOPED_TRACE(bits);
        player_.OnDone([this](WAVEHDR& header) { waveOutWrite(player_.Handle(), &header, sizeof header); });
        ASSERT_EQ(player_.Open(AnalogOut, PcmFormat(44100, 2, bits)), MMSYSERR_NOERROR);
        for (unsigned i = 0; i < Buffers; ++i) {
            ASSERT_EQ(player_.Write(Pattern(1200)), MMSYSERR_NOERROR);
        }
        ExpectLittleTaken([this](unsigned back) {
            while (player_.DoneCount() < back && Cards().AdvanceToNextCompletion(Second)) {
            }
            ASSERT_GE(player_.DoneCount(), back);
        });
        player_.OnDone(nullptr);
        player_.Shut();
        player_.Forget();
    }
}

TEST_F(CaptureTurnAround, TakesNoMemoryAndFewRounds) {
    StoreSetting(0, TEXT("DitherADC"), 4);
    for (const WORD bits : {WORD{16}, WORD{24}}) {  // dithered, and packed
        SCOPED_TRACE(bits);
        recorder_.OnDone([this](WAVEHDR& header) { recorder_.AddAgain(header); });
        Open(PcmFormat(44100, 2, bits));
        Add(1200, Buffers);
        ASSERT_EQ(recorder_.Start(), MMSYSERR_NOERROR);
        ExpectLittleTaken([this](unsigned back) {
            while (recorder_.DoneCount() < back && Cards().AdvanceToNextCompletion(Second)) {
            }
            ASSERT_GE(recorder_.DoneCount(), back);
        });
        recorder_.OnDone(nullptr);
        recorder_.Shut();
        recorder_.Forget();
    }
}

}  // namespace
