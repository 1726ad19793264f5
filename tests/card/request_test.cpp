// The handles through which the driver has a channel, and registers that do not answer.
#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/driver_test.h"
#include "tests/support/wave_player.h"

namespace {

class RequestTest : public DriverTest {
protected:
    RequestTest() : DriverTest(2) { waveOutGetNumDevs(); }

    long CountRequests(std::string_view text) {
        const std::vector<std::string> lines = TraceText();
        return std::count(lines.begin(), lines.end(), text);
    }

    const WaveFormat format_ = PcmFormat(44100, 2, 16);
};

TEST_F(RequestTest, ADeviceOpensOnceAtATime) {
    WavePlayer first;
    WavePlayer second;
    WavePlayer other;
    ASSERT_EQ(first.Open(0, format_), MMSYSERR_NOERROR);
    EXPECT_EQ(second.Open(0, format_), MMSYSERR_ALLOCATED);
    EXPECT_EQ(other.Open(2, format_), MMSYSERR_NOERROR);
    EXPECT_EQ(Cards().OpenFiles(), 2u);
    EXPECT_EQ(first.Close(), MMSYSERR_NOERROR);
    EXPECT_EQ(second.Open(0, format_), MMSYSERR_NOERROR);
}

TEST_F(RequestTest, ClosingReleasesTheChannelFirst) {
    WavePlayer player;
    ASSERT_EQ(player.Open(1, format_), MMSYSERR_NOERROR);
    Cards().ClearTrace();
    EXPECT_EQ(player.Close(), MMSYSERR_NOERROR);
    EXPECT_EQ(TraceText().back(), "RELEASE_CHANNEL");
    EXPECT_EQ(CountRequests("RELEASE_CHANNEL"), 1);
}

// What holds the wanted value already is left alone, but only when it could be read in full.
TEST_F(RequestTest, ARegisterThatCannotBeReadIsWritten) {
    const struct {
        const char* Fault;
        long Writes;
    } cases[] = {
        {nullptr, 0},
        {"READ_REGISTER:all", 1},
        {"READ_REGISTER:all:short", 1},
        {"READ_REGISTER:all:pending", 1},
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(&expected - cases);
        if (expected.Fault != nullptr) {
            AddFault(expected.Fault);
        }
        Cards().ClearTrace();
        WavePlayer player;
        EXPECT_EQ(player.Open(0, format_), MMSYSERR_NOERROR);
        EXPECT_EQ(CountRequests("write card 32 = 03 / 07"), expected.Writes);
        EXPECT_EQ(CountRequests("write card 32 = 00 / 60"), expected.Writes);
        Cards().ClearFaults();
    }
}

}  // namespace
