// Two programs on one machine: they share the cards, what the driver knows of them, and their clocks.
#include <algorithm>
#include <chrono>
#include <future>
#include <optional>

#include "tests/processes/companion.h"
#include "tests/support/driver_test.h"

namespace {

class SharedCardsTest : public testing::Test {
    const SharedMachine machine_;
};

const WaveFormat Format44100 = PcmFormat(44100, 2, 16);
const WaveFormat Format48000 = PcmFormat(48000, 2, 16);

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
        test.Tell(std::ranges::count_if(program.Cards.Trace(), [](const simulator::TraceEntry& entry) {
            return entry.Text().starts_with("write card 17");
        }));
        test.Hear();
        test.Tell(player.Close());
        test.Tell(player.Open(0, Format48000));
    });
    DriverTest::Follow(1, 0);
    Program program(2);
    WavePlayer player(0, Format44100);
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

// A program that resumes keeps the discovery's mutex for as long as the client of another one likes.
TEST_F(SharedCardsTest, ALaterProgramDoesNotWaitForADiscovery) {
    Companion other([](Companion& test) {
        test.Hear();
        const Program program;
        test.Tell(waveOutGetNumDevs());
    });
    const Program program(1);
    waveOutGetNumDevs();
    const HANDLE discovery = CreateMutexW(nullptr, TRUE, TEXT("ZPH_Kestrelvox_Discovery_Mutex"));
    auto answer = std::async(std::launch::async, [&other] { return other.Ask(); });
    EXPECT_EQ(answer.wait_for(std::chrono::minutes(1)), std::future_status::ready);
    ReleaseMutex(discovery);
    CloseHandle(discovery);
    EXPECT_EQ(answer.get(), 2);
}

TEST_F(SharedCardsTest, ALaterProgramTakesTheTableAsItIs) {
    Companion other([](Companion& test) {
        test.Hear();
        Program program;
        EXPECT_EQ(waveOutGetNumDevs(), 4u);
        EXPECT_EQ(DriverTest::DeviceName(2), u"Studio Analog");
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
    kestvox::UnloadWaveDriver();
    program->Cards.ClearTrace();
    EXPECT_EQ(DriverTest::DeviceName(2), u"Studio Analog");
    EXPECT_TRUE(program->Cards.Trace().empty());
    kestvox::UnloadWaveDriver();
    EXPECT_EQ(other.Ask(), Companion::Gone);
    EXPECT_EQ(DriverTest::DeviceName(2), u"Elsewhere Analog");
}

// All load the driver at once: one discovers the cards, and the others wait for it.
TEST_F(SharedCardsTest, ProgramsThatStartAtOnceDiscoverOnce) {
    constexpr Companion::Script Start = [](Companion& test) {
        test.Hear();
        Program program;
        test.Tell(0);
        test.Hear();
        EXPECT_EQ(waveOutGetNumDevs(), 6u);
        test.Tell(program.Cards.Trace().empty() ? 0 : 1);
        test.Hear();
    };
    Companion others[] = {Companion(Start), Companion(Start), Companion(Start), Companion(Start)};
    const Program program(3);
    int64_t discoveries = 0;
    for (Companion& other : others) {
        other.Ask();
    }
    for (Companion& other : others) {
        other.Tell(1);
    }
    for (Companion& other : others) {
        discoveries += other.Hear();
    }
    EXPECT_EQ(discoveries, 1);
}

}  // namespace
