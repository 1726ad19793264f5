// Two programs that are told of the same sleep, each at its own moment.
#include "tests/processes/companion.h"
#include "tests/support/driver_test.h"

namespace {

using simulator::Port;

constexpr DWORD Rate = 48000;
const WaveFormat Format = PcmFormat(Rate, 2, 16);

// What a companion is asked besides power events.
constexpr int64_t HowFar = 100;

const std::vector<BYTE> Silence(Rate * 4 * 3);  // three seconds

void SendPower(LPARAM event) {
    DriverLibrary().DriverProc(DRV_POWER, event);
}

// Plays on the device that it hears of, and then does as it is told.
void OtherProgram(Companion& test) {
    const UINT device = static_cast<UINT>(test.Hear());
    Program program;
    WavePlayer player;
    test.Tell(player.Open(device, Format));
    test.Tell(waveOutSetVolume(player.Handle(), 0x2000));
    test.Tell(player.Write(Silence));
    for (int64_t word = test.Hear(); word != Companion::Gone; word = test.Hear()) {
        if (word == HowFar) {
            const auto port = device % 2 == 0 ? Port::Analog : Port::Digital;
            test.Tell(static_cast<int64_t>(program.Cards.Output(device / 2, port).FramesPlayed));
        } else {
            SendPower(static_cast<LPARAM>(word));
            test.Tell(0);
        }
    }
}

struct Arrangement {
    const char* Name;
    UINT Device;        // of the other program; this one's is 0
    unsigned VolumeOf;  // mixer input of the other's volume
    bool Linked;        // card 1 follows card 0
    bool OtherWakes;    // ... first
};

class SleepingProgramsTest : public testing::TestWithParam<Arrangement> {
private:
    const SharedMachine machine_;
};

TEST_P(SleepingProgramsTest, GoOnAtTheirRatesAndGains) {
    const Arrangement& test = GetParam();
    Companion other(OtherProgram);
    if (test.Linked) {
        DriverTest::Follow(1, 0);
    }
    Program program(2);
    WavePlayer player(0, Format);
    EXPECT_EQ(waveOutSetVolume(player.Handle(), 0x4000), MMSYSERR_NOERROR);
    other.Tell(test.Device);
    ASSERT_EQ(other.Hear(), NoError);
    ASSERT_EQ(other.Hear(), NoError);
    ASSERT_EQ(other.Hear(), NoError);
    ASSERT_EQ(player.Write(Silence), MMSYSERR_NOERROR);

    const auto otherPower = [&other](LPARAM event) { EXPECT_EQ(other.Ask(event), 0); };
    const auto wake = [&](bool othersTurn) {
        othersTurn ? otherPower(PWR_SUSPENDRESUME) : SendPower(PWR_SUSPENDRESUME);
    };
    const auto played = [&program] { return program.Cards.Output(0, Port::Analog).FramesPlayed; };
    const auto othersPlayed = [&other] {
        other.Tell(HowFar);
        return static_cast<uint64_t>(other.Hear());
    };
    program.Cards.Advance(100000);
    for (int sleep = 0; sleep < 2; ++sleep) {
        SCOPED_TRACE(sleep);
        SendPower(PWR_SUSPENDREQUEST);
        program.Cards.Advance(1000);
        otherPower(PWR_SUSPENDREQUEST);
        program.Cards.PowerCycle(0);
        program.Cards.PowerCycle(1);
        wake(test.OtherWakes);
        program.Cards.Advance(50000);
        wake(!test.OtherWakes);

        EXPECT_EQ(program.Cards.SampleRate(0), Rate);
        EXPECT_EQ(program.Cards.SampleRate(test.Device / 2), Rate);
        EXPECT_EQ(program.Cards.MixerGain(0, 2), 32u);
        EXPECT_EQ(program.Cards.MixerGain(test.Device / 2, test.VolumeOf), 16u);
        WaveRecorder third;
        EXPECT_EQ(third.Open(0, PcmFormat(44100, 2, 16)), unsigned{WAVERR_BADFORMAT}) << "their clock runs";
        const uint64_t before = played();
        const uint64_t othersBefore = othersPlayed();
        program.Cards.Advance(100000);
        EXPECT_NEAR(static_cast<double>(played() - before), Rate / 10.0, 1);
        EXPECT_NEAR(static_cast<double>(othersPlayed() - othersBefore), Rate / 10.0, 1);
        EXPECT_EQ(program.Cards.Output(0, Port::Analog).FramesSilent, 0u);
    }
}

INSTANTIATE_TEST_SUITE_P(TwoOf, SleepingProgramsTest,
                         testing::Values(Arrangement{"PortsOfACard", 1, 7, false, false},
                                         Arrangement{"PortsOfACardTheOtherFirst", 1, 7, false, true},
                                         Arrangement{"Cards", 2, 2, false, false},
                                         Arrangement{"LinkedCards", 2, 2, true, false},
                                         Arrangement{"LinkedCardsTheOtherFirst", 2, 2, true, true}),
                         [](const testing::TestParamInfo<Arrangement>& test) { return test.param.Name; });

}  // namespace
