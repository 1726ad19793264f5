// A gain is moved on the Monitor page of one program while another one plays on that card.
#include <gtest/gtest.h>

#include "tests/processes/companion.h"
#include "tests/support/driver_test.h"
#include "tests/support/sheet.h"
#include "tests/support/wave_player.h"
#include "tests/support/wave_sound.h"

namespace {

using simulator::Frame;
using simulator::Port;

constexpr int AnalogPlaybackSlider = 1035;  // into the analog output
constexpr int Half = 100000;                // microseconds
constexpr size_t FrameCount = 8000;         // less than two halves at 44100 Hz

// The way to the stored settings alone.
struct Stored : DriverTest {
    using DriverTest::StoreSetting;
};

void PlayAndListen(Companion& test) {
    test.Hear();
    Program program;
    const WaveFormat format = PcmFormat(44100, 2, 16);
    const std::vector<BYTE> data = Pattern(FrameCount * 4);
    const std::vector<Frame> sound = Sound(format, data);
    WavePlayer player;
    ASSERT_EQ(player.Open(0, format), MMSYSERR_NOERROR);
    ASSERT_EQ(player.Write(data), MMSYSERR_NOERROR);
    program.Cards.Advance(Half);
    const size_t moved = program.Cards.Played(0, Port::Analog).size();
    test.Tell(static_cast<int64_t>(moved));
    test.Hear();
    program.Cards.Advance(Half);

    EXPECT_EQ(program.Cards.Played(0, Port::Analog), sound);
    EXPECT_EQ(player.DoneCount(), 1u);
    std::vector<Frame> expected = sound;
    for (size_t i = moved; i < expected.size(); ++i) {
        expected[i] = {expected[i].Left / 128 * 50, expected[i].Right / 128 * 50};
    }
    EXPECT_EQ(program.Cards.Heard(0, Port::Analog), expected);
    player.Shut();
    test.Tell(1);
}

TEST(LiveGain, IsHeardInWhatAnotherProgramPlays) {
    const SharedMachine machine;
    Companion other(PlayAndListen);
    Program program(1);
    Stored::StoreSetting(0, TEXT("AdvancedMonitoring"), 1);
    DriverLibrary library;
    const Sheet sheet(library);
    const SheetPage page = sheet.Show(u"Monitor: 'Kestrelvox'");
    other.Tell(1);
    ASSERT_GT(other.Hear(), 1000);
    page.Slide(AnalogPlaybackSlider, 64);
    // A handle of its own for this one move.
    EXPECT_EQ(program.Cards.MixerGain(0, 2), 50u);
    EXPECT_EQ(program.Cards.OpenFiles(), 0u);
    other.Tell(1);
    EXPECT_EQ(other.Hear(), 1);
}

}  // namespace
