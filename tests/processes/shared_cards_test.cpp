// Two programs on one machine: they share the cards, what the driver knows of them, and their clocks.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <optional>

#include "tests/processes/companion.h"
#include "tests/support/driver_test.h"
#include "tests/support/system.h"
#include "tests/support/text.h"
#include "tests/support/wave_player.h"

namespace {

using simulator::Port;

class SharedCardsTest : public testing::Test {
protected:
    // Card 1 follows card 0.
    static void LinkCards() { DriverTest::Follow(1, 0); }

private:
    const SharedMachine machine_;
};

const WaveFormat Format44100 = PcmFormat(44100, 2, 16);
const WaveFormat Format48000 = PcmFormat(48000, 2, 16);

// Half a second of sound.
std::vector<BYTE> Sound() {
    return std::vector<BYTE>(44100 * 4 / 2);
}

std::u16string NameOf(UINT device) {
    WAVEOUTCAPSW caps = {};
    waveOutGetDevCapsW(device, &caps, sizeof caps);
    return Utf16(caps.szPname);
}

TEST_F(SharedCardsTest, APortHasOneOwnerAndAClockOneRate) {
    Companion other([](Companion& test) {
        test.Hear();
        Program program;
        WavePlayer player;
        test.Tell(player.Open(0, Format44100));
        test.Tell(player.Open(1, Format48000));
        test.Tell(player.Open(2, Format48000));
        test.Tell(player.Open(2, Format44100));
        // The clock runs: only the stream's own port is programmed.
        const std::vector<simulator::TraceEntry> trace = program.Cards.Trace();
        test.Tell(std::count_if(trace.begin(), trace.end(), [](const simulator::TraceEntry& entry) {
            return entry.Text().starts_with("write card 17");
        }));
        test.Hear();
        test.Tell(player.Close());
        test.Tell(player.Open(0, Format48000));
    });
    LinkCards();
    Program program(2);
    WavePlayer player;
    ASSERT_EQ(player.Open(0, Format44100), MMSYSERR_NOERROR);
    EXPECT_EQ(other.Ask(), static_cast<int64_t>(MMSYSERR_ALLOCATED));
    EXPECT_EQ(other.Hear(), static_cast<int64_t>(WAVERR_BADFORMAT)) << "the other port";
    EXPECT_EQ(other.Hear(), static_cast<int64_t>(WAVERR_BADFORMAT)) << "a follower";
    EXPECT_EQ(other.Hear(), NoError);
    EXPECT_EQ(other.Hear(), 0);

    ASSERT_EQ(player.Close(), MMSYSERR_NOERROR);
    EXPECT_EQ(player.Open(0, Format48000), static_cast<MMRESULT>(WAVERR_BADFORMAT)) << "the other one runs";
    EXPECT_EQ(other.Ask(), NoError);
    EXPECT_EQ(other.Hear(), NoError) << "the rate is free again";
}

TEST_F(SharedCardsTest, ALaterProgramTakesTheTableAsItIs) {
    Companion other([](Companion& test) {
        test.Hear();
        Program program;
        EXPECT_EQ(waveOutGetNumDevs(), 4u);
        EXPECT_EQ(NameOf(2), u"Studio Analog");
        test.Tell(static_cast<int64_t>(program.Cards.Trace().size()));
        test.Hear();
    });
    DriverTest::StoreText(1, TEXT("Name"), u"Studio");
    std::optional<Program> program(2);
    EXPECT_EQ(waveOutGetNumDevs(), 4u);
    EXPECT_FALSE(program->Cards.Trace().empty());
    DriverTest::StoreText(1, TEXT("Name"), u"Elsewhere");
    EXPECT_EQ(other.Ask(), 0) << "requests for a discovery that was made already";

    // The table lives until the last program has gone, not just the one that made it.
    test_system::UnloadWaveDriver();
    program->Cards.ClearTrace();
    EXPECT_EQ(NameOf(2), u"Studio Analog");
    EXPECT_TRUE(program->Cards.Trace().empty());
    test_system::UnloadWaveDriver();
    EXPECT_EQ(other.Ask(), Companion::Gone);
    EXPECT_EQ(NameOf(2), u"Elsewhere Analog");
}

TEST_F(SharedCardsTest, ProgramsThatStartAtOnceDiscoverOnce) {
    constexpr Companion::Script Start = [](Companion& test) {
        test.Hear();
        Program program;
        test.Tell(0);
        test.Hear();
        EXPECT_EQ(waveOutGetNumDevs(), 6u);
        test.Tell(static_cast<int64_t>(program.Cards.Trace().size()));
        test.Hear();
    };
    std::array<Companion, 4> others = {Companion(Start), Companion(Start), Companion(Start),
                                       Companion(Start)};
    Program program(3);
    for (Companion& other : others) {
        EXPECT_EQ(other.Ask(), 0);
    }
    for (Companion& other : others) {
        other.Tell(1);
    }
    int discoveries = 0;
    for (Companion& other : others) {
        discoveries += other.Hear() != 0 ? 1 : 0;
    }
    EXPECT_EQ(discoveries, 1);
    EXPECT_EQ(waveOutGetNumDevs(), 6u);
    EXPECT_TRUE(program.Cards.Trace().empty());
}

// A program that has device 0 open and plays on it until it is killed.
void PlayUntilKilled(Companion& test) {
    test.Hear();
    Program program;
    WavePlayer player;
    test.Tell(player.Open(0, Format44100));
    test.Tell(player.Write(Sound()));
    test.Hear();
}

TEST_F(SharedCardsTest, AKilledProgramFreesItsPort) {
    Companion other(PlayUntilKilled);
    Program program(1);
    WavePlayer player;
    ASSERT_EQ(other.Ask(), NoError);
    ASSERT_EQ(other.Hear(), NoError);
    EXPECT_EQ(player.Open(0, Format44100), static_cast<MMRESULT>(MMSYSERR_ALLOCATED));
    other.Kill();
    EXPECT_FALSE(program.Cards.ChannelClaimed(0, 2));
    EXPECT_EQ(player.Open(0, Format44100), static_cast<MMRESULT>(MMSYSERR_NOERROR));
}

TEST_F(SharedCardsTest, PortOfAKilledProgramPlaysForTheNext) {
    Companion other(PlayUntilKilled);
    Program program(1);
    ASSERT_EQ(waveOutGetNumDevs(), 2u);
    ASSERT_EQ(other.Ask(), NoError);
    ASSERT_EQ(other.Hear(), NoError);
    other.Kill();
    WavePlayer player;
    ASSERT_EQ(player.Open(0, Format44100), MMSYSERR_NOERROR);
    EXPECT_EQ(player.Write(Sound()), static_cast<MMRESULT>(MMSYSERR_NOERROR));
    program.Cards.Advance(600000);
    EXPECT_EQ(program.Cards.Output(0, Port::Analog).FramesPlayed, 22050u);
    EXPECT_EQ(player.DoneCount(), 1u);
}

// Whether the companion starts first.
class SharedStartTest : public SharedCardsTest, public testing::WithParamInterface<bool> {};

TEST_P(SharedStartTest, TwoProgramsStartOnOneFrame) {
    const bool companionFirst = GetParam();
    Companion other([](Companion& test) {
        test.Hear();
        Program program;
        WavePlayer player;
        test.Tell(player.Open(2, Format44100));
        test.Hear();
        test.Tell(player.Write(Sound()));
        test.Hear();
        const simulator::OutputStatus status = program.Cards.Output(1, Port::Analog);
        test.Tell(status.Started ? static_cast<int64_t>(status.StartFrame) : 0);
        test.Tell(static_cast<int64_t>(status.FramesPlayed));
        test.Hear();
    });
    LinkCards();
    Program program(2);
    WavePlayer player;
    ASSERT_EQ(player.Open(0, Format44100), MMSYSERR_NOERROR);
    ASSERT_EQ(other.Ask(), NoError);
    const auto start = [&](bool companion) {
        if (companion) {
            EXPECT_EQ(other.Ask(), NoError);
        } else {
            EXPECT_EQ(player.Write(Sound()), static_cast<MMRESULT>(MMSYSERR_NOERROR));
        }
    };
    start(companionFirst);
    program.Cards.Advance(30000);
    EXPECT_FALSE(program.Cards.Output(0, Port::Analog).Started);
    EXPECT_FALSE(program.Cards.Output(1, Port::Analog).Started);
    start(!companionFirst);
    program.Cards.Advance(100000);
    const simulator::OutputStatus status = program.Cards.Output(0, Port::Analog);
    EXPECT_TRUE(status.Started);
    EXPECT_EQ(other.Ask(), static_cast<int64_t>(status.StartFrame));
    EXPECT_EQ(other.Hear(), static_cast<int64_t>(status.FramesPlayed));
}

INSTANTIATE_TEST_SUITE_P(Either, SharedStartTest, testing::Bool());

}  // namespace
