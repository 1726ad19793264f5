// What another thread does in the middle of a wake-up.
#include <algorithm>
#include <chrono>
#include <future>

#include "simulator/requests/request_hold.h"
#include "tests/support/driver_test.h"

namespace {

using simulator::RequestHold;
using simulator::TraceEntry;

// Card 1 follows card 0.
class InterruptedWakeUpTest : public WithCards<DriverTest, 2> {
protected:
    InterruptedWakeUpTest() { Follow(1, 0); }

    // Falls asleep and wakes up, and `act` is done while the wake-up is about to send the last request to
    // that card which reads so: until it has been done, or waits for the wake-up.
    void ActBefore(unsigned card, const std::string& line, const std::function<void()>& act) {
        FallAsleep();
        Cards().ClearTrace();
        WakeUp();
        const std::vector<TraceEntry> trace = Cards().Trace();
        const auto after = std::find_if(trace.rbegin(), trace.rend(), [&](const TraceEntry& entry) {
                               return entry.Card == card && entry.Text() == line;
                           }).base();
        ASSERT_NE(after, trace.begin());
        FallAsleep();
        RequestHold hold(static_cast<unsigned>(after - trace.begin()), RequestHold::Where::Before);
        const auto waking = std::async(std::launch::async, [&hold] {
            const RequestHold::Watch watch(hold);
            WakeUp();
        });
        EXPECT_EQ(hold.AwaitHeldOrEnded(), RequestHold::State::Held);
        const auto acting = std::async(std::launch::async, act);
        acting.wait_for(std::chrono::milliseconds(100));
        hold.LetGo();
        acting.wait();
        waking.wait();
    }
};

// The only stream is closed while the clocks of its group are programmed for it, and another one is opened.
TEST_F(InterruptedWakeUpTest, AClosedStreamLeavesNoRateBehind) {
    WavePlayer player(0, PcmFormat(48000, 2, 16));
    WavePlayer next;
    MMRESULT result = MMSYSERR_ERROR;
    ActBefore(1, "write card 17 = 00 / 01", [&] {
        player.Shut();
        result = next.Open(1, PcmFormat(44100, 2, 16));
    });
    EXPECT_EQ(result, MMSYSERR_NOERROR);
    EXPECT_EQ(Cards().SampleRate(0), 44100u);
    EXPECT_EQ(Cards().SampleRate(1), 44100u);
}

TEST_F(InterruptedWakeUpTest, DirectModeIsKept) {
    const WavePlayer player(0, PcmFormat(48000, 2, 16));
    ActBefore(0, "write port 0 = 40 / C0",
              [&player] { EXPECT_EQ(waveOutMessage(player.Handle(), DirectMode, 0, 0), MMSYSERR_NOERROR); });
    EXPECT_EQ(Cards().OutputRegister(0, Port::Analog, 0) & 0xC0, 0xC0);
}

}  // namespace
