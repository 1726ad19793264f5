// Programs that let the driver go, or end, in the middle of playing.
#include <chrono>
#include <cstdlib>
#include <future>

#include "tests/interleaving/stream.h"
#include "tests/processes/companion.h"
#include "tests/reliability/stride.h"
#include "tests/support/wave_player.h"
#include "tests/support/wave_recorder.h"

namespace {

constexpr int64_t Millisecond = 1000;
constexpr unsigned Generations = 5;
constexpr UINT Outputs = 4;  // of two cards; of each generation one program plays on each
constexpr unsigned Unloads = 4;

const WaveFormat Format44100 = PcmFormat(44100, 2, 16);

// As the multimedia system has the driver play. What the driver is let go with does not come back.
std::unique_ptr<interleaving::Stream> Play(const DriverLibrary& driver, UINT device) {
    auto stream = std::make_unique<interleaving::Stream>(
        driver, interleaving::StreamPlan{.Output = true, .Card = device / 2, .Port = device % 2});
    EXPECT_EQ(stream->Open(interleaving::Rate), MMSYSERR_NOERROR);
    for (const DWORD length :
         {DWORD{1000}, interleaving::Stream::LongHeader, interleaving::Stream::LongHeader}) {
        EXPECT_EQ(stream->Write(length), MMSYSERR_NOERROR);
    }
    return stream;
}

void UnloadAndEndInTheMiddle(Companion& test) {
    const auto device = static_cast<UINT>(test.Hear());
    Program program;
    for (unsigned round = 0;; ++round) {
        const std::string usage = test_system::Usage();
        auto driver = std::make_unique<DriverLibrary>();
        ASSERT_TRUE(driver->IsLoaded());
        const auto playing = Play(*driver, device);
        program.Cards.Advance(30 * Millisecond);
        if (round == Unloads) {
            test.Tell(0);
            test.Hear();
            std::exit(testing::Test::HasFailure() ? 1 : 0);
        }
        driver.reset();
        EXPECT_EQ(program.Cards.OpenFiles(), 0u);
        test_system::ExpectUsage(usage);
    }
}

// Twenty programs let the driver go four times each, and then end.
TEST(Unload, InTheMiddleOfEverything) {
    SharedMachine machine;
    for (unsigned generation = 0; generation < Generations && !testing::Test::HasFailure();
         generation += RoundStep) {
        SCOPED_TRACE(testing::Message() << "generation " << generation);
        machine.Renew();
        std::vector<std::unique_ptr<Companion>> programs;
        for (UINT device = 0; device < Outputs; ++device) {
            programs.push_back(std::make_unique<Companion>(UnloadAndEndInTheMiddle));
        }
        Program program(2);
        // The clocks run all the time: an open has less to do.
        WaveRecorder first(0, Format44100);
        WaveRecorder second(2, Format44100);
        for (UINT device = 0; device < Outputs; ++device) {
            programs[device]->Tell(device);
        }
        for (auto& other : programs) {
            EXPECT_EQ(other->Hear(), 0);
        }
        programs.clear();
        EXPECT_EQ(first.Close(), MMSYSERR_NOERROR);
        EXPECT_EQ(second.Close(), MMSYSERR_NOERROR);
        for (UINT device = 0; device < Outputs; ++device) {
            WavePlayer player(device, PcmFormat(48000, 2, 16));
        }
    }
}

// Plays a buffer and stays in its callback, with the mutex of all programs, until it is told to go on.
void StayInCallback(Companion& test) {
    test.Hear();
    Program program;
    WavePlayer player;
    player.OnDone([&test](WAVEHDR&) {
        test.Tell(0);
        test.Hear();
    });
    ASSERT_EQ(player.Open(0, Format44100), MMSYSERR_NOERROR);
    EXPECT_EQ(player.Write(Pattern(4000)), MMSYSERR_NOERROR);
    program.Cards.Advance(100 * Millisecond);
    EXPECT_EQ(player.Close(), MMSYSERR_NOERROR);
}

// A program that lets the driver go waits for others five seconds in all, and then closes what it has.
TEST(Unload, DoesNotWaitForTheCallbackOfAnotherProgram) {
    SharedMachine machine;
    Companion other(StayInCallback);
    Program program(1);
    auto driver = std::make_unique<DriverLibrary>();
    const auto playing = Play(*driver, 1);
    ASSERT_EQ(other.Ask(), 0);
    auto unloaded = std::async(std::launch::async, [&driver] { driver.reset(); });
    EXPECT_EQ(unloaded.wait_for(std::chrono::minutes(2)), std::future_status::ready);
    other.Tell(0);
    unloaded.wait();
    EXPECT_FALSE(program.Cards.ChannelClaimed(0, 3));
}

}  // namespace
