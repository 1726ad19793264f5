// A close that follows a reset succeeds, whatever the client hands in again from inside the reset.
#include "tests/support/input_test.h"
#include "tests/support/output_test.h"

namespace {

constexpr unsigned Buffers = 12;

template <typename Client>
void ExpectResetAndClosed(Client& client) {
    EXPECT_EQ(client.Reset(), MMSYSERR_NOERROR);
    EXPECT_EQ(client.DoneCount(), Buffers);
    client.OnDone(nullptr);
    EXPECT_EQ(client.Close(), MMSYSERR_NOERROR);
    client.Shut();  // when it could not be closed
    for (unsigned i = 0; i < Buffers; ++i) {
        EXPECT_EQ(client.DoneCount(i), 2u) << i;
    }
}

class PlaybackCloseTest : public OutputTest {};
class CaptureCloseTest : public InputTest {};

// Some are in the card and some are not.
TEST_F(PlaybackCloseTest, WithEverythingHandedInAgain) {
    for (const WORD bits : {WORD{16}, WORD{24}}) {  // given to the card as it is, and converted
        ASSERT_EQ(player_.Open(AnalogOut, PcmFormat(44100, 2, bits)), MMSYSERR_NOERROR);
        for (unsigned i = 0; i < Buffers; ++i) {
            ASSERT_EQ(player_.Write(Pattern(12000)), MMSYSERR_NOERROR);
        }
        Cards().Advance(1000);
        player_.OnDone([this](WAVEHDR& header) { waveOutWrite(player_.Handle(), &header, sizeof header); });
        ExpectResetAndClosed(player_);
        player_.Forget();
    }
}

TEST_F(CaptureCloseTest, WithEverythingHandedInAgain) {
    for (const bool running : {false, true}) {
        Open(PcmFormat(44100, 2, 16));
        Add(400, Buffers);
        if (running) {
            recorder_.Start();
            Cards().Advance(1000);
        }
        recorder_.OnDone([this](WAVEHDR& header) { recorder_.AddAgain(header); });
        ExpectResetAndClosed(recorder_);
        recorder_.Forget();
    }
}

}  // namespace
