// Programs that are killed in the middle of anything: the others go on, and whoever comes next finds every
// port free, every clock at rest and nobody to wait for.
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <random>

#include "simulator/machine/host.h"
#include "tests/processes/companion.h"
#include "tests/reliability/tally.h"
#include "tests/support/driver_test.h"
#include "tests/support/text.h"
#include "tests/support/wave_player.h"
#include "tests/support/wave_recorder.h"
#include "tests/support/wave_sound.h"

namespace {

using simulator::Fault;
using simulator::Port;
using simulator::host::Die;

constexpr int64_t Millisecond = 1000;
constexpr UINT PortsOfDirection = 4;  // of two cards

const WaveFormat Format44100 = PcmFormat(44100, 2, 16);
const WaveFormat Format48000 = PcmFormat(48000, 2, 16);

class KilledProgramsTest : public testing::Test {
protected:
    SharedMachine machine_;
};

// How a program comes to its end.
struct Death {
    UINT Device;        // 0 to 3 outputs, 4 to 7 inputs
    unsigned Request;   // the last one that it makes; 0: none is
    unsigned Callback;  // ... or it is killed inside that callback, with the lock of all processes
};

void DieAt(unsigned callback, unsigned& callbacks) {
    if (++callbacks == callback) {
        Die();
    }
}

// Opens, plays, pauses, resets and closes, over and over, until it dies.
void PlayToDeath(simulator::Simulator& cards, const Death& death) {
    unsigned callbacks = 0;
    WavePlayer player;
    player.OnDone([&](WAVEHDR&) { DieAt(death.Callback, callbacks); });
    for (int life = 0; life < 100; ++life) {
        if (player.Open(death.Device, Format44100) != MMSYSERR_NOERROR) {
            return;
        }
        for (unsigned i = 0; i < 8; ++i) {
            player.Write(Pattern(2000, i));
        }
        cards.Advance(15 * Millisecond);
        waveOutPause(player.Handle());
        waveOutRestart(player.Handle());
        cards.Advance(15 * Millisecond);
        player.Shut();
        player.Forget();
    }
}

void RecordToDeath(simulator::Simulator& cards, const Death& death) {
    unsigned callbacks = 0;
    WaveRecorder recorder;
    recorder.OnDone([&](WAVEHDR&) { DieAt(death.Callback, callbacks); });
    for (int life = 0; life < 100; ++life) {
        if (recorder.Open(death.Device - PortsOfDirection, Format44100) != MMSYSERR_NOERROR) {
            return;
        }
        for (unsigned i = 0; i < 8; ++i) {
            recorder.Add(2000);
        }
        recorder.Start();
        cards.Advance(15 * Millisecond);
        recorder.Stop();
        recorder.Start();
        cards.Advance(15 * Millisecond);
        recorder.Shut();
        recorder.Forget();
    }
}

// Hears how it is to die, which is also its word to begin.
void Victim(Companion& test) {
    const auto hear = [&test] { return static_cast<unsigned>(test.Hear()); };
    const Death death = {.Device = hear(), .Request = hear(), .Callback = hear()};
    simulator::Simulator cards({.Cards = 0, .Time = simulator::TimeKind::Stepped});
    if (death.Request != 0) {
        cards.AddFault({.What = Fault::Kind::Die, .Code = Fault::AnyCode, .Nth = death.Request});
    }
    death.Device < PortsOfDirection ? PlayToDeath(cards, death) : RecordToDeath(cards, death);
    Die();
}

void Begin(Companion& victim, const Death& death) {
    victim.Tell(death.Device);
    victim.Tell(death.Request);
    victim.Tell(death.Callback);
}

// Plays while the others die: every buffer is heard, whole and in order, and comes back once.
void Survive(Companion& test) {
    constexpr unsigned Buffers = 60;
    test.Hear();
    std::optional<Program> program(2);
    WavePlayer player;
    test.Tell(player.Open(0, Format44100));
    std::vector<BYTE> all;
    for (unsigned i = 0; i < Buffers; ++i) {
        const std::vector<BYTE> data = Pattern(4000, i);
        EXPECT_EQ(player.Write(data), MMSYSERR_NOERROR);
        all.insert(all.end(), data.begin(), data.end());
    }
    test.Tell(0);
    test.Hear();
    program->Cards.Advance(10 * 1000 * Millisecond);
    EXPECT_EQ(player.DoneCount(), Buffers);
    EXPECT_TRUE(program->Cards.Played(0, Port::Analog) == Sound(Format44100, all));
    test.Tell(player.Close());
    test.Hear();
    program.reset();
}

// Every port opens, at a rate of its own choice, and starts by itself.
void Audit(Companion& test) {
    test.Hear();
    Program program;
    waveOutGetNumDevs();  // from now on the table is as the others leave it
    test.Tell(0);
    test.Hear();
    for (unsigned card = 0; card < 2; ++card) {
        program.Cards.SetDigitalInputRate(card, 48000);
    }
    for (UINT device = 0; device < PortsOfDirection; ++device) {
        SCOPED_TRACE(testing::Message() << "output " << device);
        WavePlayer player;
        EXPECT_EQ(player.Open(device, Format48000), MMSYSERR_NOERROR);
        EXPECT_EQ(player.Write(Pattern(4000)), MMSYSERR_NOERROR);
        program.Cards.Advance(50 * Millisecond);
        EXPECT_EQ(player.DoneCount(), 1u);
        EXPECT_EQ(player.Close(), MMSYSERR_NOERROR);
    }
    for (UINT device = 0; device < PortsOfDirection; ++device) {
        SCOPED_TRACE(testing::Message() << "input " << device);
        WaveRecorder recorder;
        EXPECT_EQ(recorder.Open(device, Format48000), MMSYSERR_NOERROR);
        EXPECT_EQ(recorder.Add(4000), MMSYSERR_NOERROR);
        EXPECT_EQ(recorder.Start(), MMSYSERR_NOERROR);
        program.Cards.Advance(50 * Millisecond);
        EXPECT_EQ(recorder.DoneCount(), 1u);
        EXPECT_EQ(recorder.Close(), MMSYSERR_NOERROR);
    }
    test.Tell(0);
}

TEST_F(KilledProgramsTest, TheOthersGoOn) {
    constexpr unsigned Rounds = 12;
    std::mt19937 random(20);
    const auto pick = [&random](unsigned most) { return static_cast<unsigned>(random() % most) + 1; };
    for (unsigned round = 0; round < Rounds && !HasFailure(); round += Companion::RoundStep) {
        SCOPED_TRACE(testing::Message() << "round " << round);
        machine_.Renew();
        Companion survivor(Survive);
        Companion auditor(Audit);
        std::vector<std::unique_ptr<Companion>> victims;
        for (UINT device = 1; device < 7; ++device) {
            victims.push_back(std::make_unique<Companion>(Victim));
        }
        if (round % 2 != 0) {
            DriverTest::Follow(1, 0);
        }
        for (unsigned card = 0; card < 2; ++card) {
            DriverTest::StoreSetting(card, TEXT("CheckClocks"), 0);
        }
        ASSERT_EQ(survivor.Ask(), NoError);
        ASSERT_EQ(survivor.Hear(), 0);
        ASSERT_EQ(auditor.Ask(), 0);
        for (UINT device = 1; device < 7; ++device) {
            const bool inCallback = pick(3) == 1;
            Begin(*victims[device - 1], {device, inCallback ? 0 : pick(400), inCallback ? pick(30) : 0});
        }
        for (auto& victim : victims) {
            EXPECT_EQ(victim->Hear(), Companion::Gone);
            victim->Kill();
        }
        EXPECT_EQ(survivor.Ask(), NoError);
        survivor.Tell(1);
        EXPECT_EQ(auditor.Ask(), 0) << "what is wrong is above";
        tally::Add(tally::Rounds, 1);
    }
}

// A program that has the device open until it is killed.
template <UINT Device>
void OpenAndWait(Companion& test) {
    test.Hear();
    Program program;
    WavePlayer player;
    test.Tell(player.Open(Device, Format44100));
    test.Hear();
}

// The only program on a clock dies: the clock is free for any rate at once, also through another port.
TEST_F(KilledProgramsTest, TheClockIsFree) {
    Companion victim(OpenAndWait<0>);
    Program program(1);
    ASSERT_EQ(waveOutGetNumDevs(), 2u);
    ASSERT_EQ(victim.Ask(), NoError);
    WavePlayer player;
    EXPECT_EQ(player.Open(1, Format48000), static_cast<MMRESULT>(WAVERR_BADFORMAT)) << "it lives";
    victim.Kill();
    EXPECT_EQ(player.Open(1, Format48000), static_cast<MMRESULT>(MMSYSERR_NOERROR));
    EXPECT_EQ(player.Close(), MMSYSERR_NOERROR);
}

// A program dies that others would have waited for, to start on one frame with it.
TEST_F(KilledProgramsTest, AStartDoesNotWaitForAKilledProgram) {
    Companion victim(OpenAndWait<1>);
    Program program(1);
    ASSERT_EQ(waveOutGetNumDevs(), 2u);
    ASSERT_EQ(victim.Ask(), NoError);
    WavePlayer player;
    ASSERT_EQ(player.Open(0, Format44100), MMSYSERR_NOERROR);
    victim.Kill();
    EXPECT_EQ(player.Write(Pattern(4000)), MMSYSERR_NOERROR);
    program.Cards.Advance(100 * Millisecond);
    EXPECT_EQ(player.DoneCount(), 1u);
    EXPECT_EQ(player.Close(), MMSYSERR_NOERROR);
}

// A program dies while it closes: the port is not open any more, and nothing counts it.
TEST_F(KilledProgramsTest, AtAnyRequestOfAClose) {
    for (unsigned request = 1; request <= 14; request += Companion::RoundStep) {
        SCOPED_TRACE(request);
        machine_.Renew();
        Companion victim([](Companion& test) {
            const auto dyingRequest = static_cast<unsigned>(test.Hear());
            Program program;
            WavePlayer player;
            test.Tell(player.Open(0, Format44100));
            test.Tell(player.Write(Pattern(4000)));
            program.Cards.Advance(100 * Millisecond);
            program.Cards.AddFault({.What = Fault::Kind::Die, .Code = Fault::AnyCode, .Nth = dyingRequest});
            player.Close();
            Die();
        });
        Companion auditor(Audit);
        Companion first([](Companion& test) {
            test.Hear();
            Program program(2);
            waveOutGetNumDevs();
            test.Tell(0);
            test.Hear();
        });
        EXPECT_EQ(first.Ask(), 0);
        EXPECT_EQ(auditor.Ask(), 0);
        EXPECT_EQ(victim.Ask(request), NoError);
        EXPECT_EQ(victim.Hear(), NoError);
        EXPECT_EQ(victim.Hear(), Companion::Gone);
        victim.Kill();
        first.Tell(1);
        EXPECT_EQ(auditor.Ask(), 0);
        tally::Add(tally::Rounds, 1);
    }
}

// A program dies in the middle of the discovery while another one waits for its end.
TEST_F(KilledProgramsTest, InTheDiscovery) {
    for (unsigned request = 1; request <= 160; request += 13 * Companion::RoundStep) {
        SCOPED_TRACE(request);
        machine_.Renew();
        Companion scene([](Companion& test) {
            test.Hear();
            const simulator::Simulator cards({.Cards = 2, .Time = simulator::TimeKind::Stepped});
            test.Tell(0);
            test.Hear();
        });
        Companion victim(Victim);
        Companion next([](Companion& test) {
            test.Hear();
            Program program;
            EXPECT_EQ(waveOutGetNumDevs(), 4u);
            for (UINT device = 0; device < 4; device += 2) {
                WAVEOUTCAPSW caps = {};
                EXPECT_EQ(waveOutGetDevCapsW(device, &caps, sizeof caps), MMSYSERR_NOERROR);
                EXPECT_EQ(Utf16(caps.szPname), device == 0 ? u"First Analog" : u"Second Analog");
            }
            test.Tell(0);
        });
        DriverTest::StoreText(0, TEXT("Name"), u"First");
        DriverTest::StoreText(1, TEXT("Name"), u"Second");
        EXPECT_EQ(scene.Ask(), 0);
        Begin(victim, {0, request, 0});
        EXPECT_EQ(next.Ask(), 0);
        EXPECT_EQ(victim.Hear(), Companion::Gone);
        victim.Kill();
        tally::Add(tally::Rounds, 1);
    }
}

}  // namespace
