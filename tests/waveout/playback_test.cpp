#include "tests/support/driver_test.h"
#include "tests/support/wave_player.h"

namespace {

class PlaybackTest : public DriverTest {
protected:
    WavePlayer player_;
};

TEST_F(PlaybackTest, WhatIsWrittenIsHeardAndComesBackOnce) {
    ASSERT_EQ(player_.Open(0, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
    const std::vector<BYTE> data = Pattern(4096);
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(player_.Write(data), MMSYSERR_NOERROR);
    }
    Cards().Advance(1000000);
    EXPECT_EQ(player_.DoneCount(), 20u);
    EXPECT_EQ(Cards().Played(0, simulator::Port::Analog).size(), 20480u);
    EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR);
}

}  // namespace
