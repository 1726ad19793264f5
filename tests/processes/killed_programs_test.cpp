// Programs that are killed in the middle of anything: the others go on, and whoever comes next finds every
// port free, every clock at rest and nobody to wait for.
#include <atomic>
#include <chrono>
#include <future>
#include <random>

#include "simulator/machine/host.h"
#include "simulator/requests/request_hold.h"
#include "tests/processes/companion.h"
#include "tests/reliability/stride.h"
#include "tests/reliability/tally.h"
#include "tests/support/clock_tree_user.h"
#include "tests/support/driver_test.h"
#include "tests/support/sheet.h"

namespace {

using simulator::Fault;
using simulator::Port;
using simulator::RequestHold;
using simulator::host::Die;

constexpr int64_t Millisecond = 1000;
constexpr UINT PortsOfDirection = 4;  // of two cards

const WaveFormat Format44100 = PcmFormat(44100, 2, 16);
const WaveFormat Format48000 = PcmFormat(48000, 2, 16);

class KilledProgramsTest : public testing::Test {
protected:
    SharedMachine machine_;
};

void Give(WavePlayer& player) {
    player.Write(Pattern(4000));
}
void Give(WaveRecorder& recorder) {
    recorder.Add(4000);
    recorder.Start();
}

// Opens, runs, pauses, resets and closes, over and over, until it dies.
template <typename Client>
void LiveToDeath(simulator::Simulator& cards, UINT device, unsigned callback) {
    std::atomic<unsigned> callbacks = 0;
    Client client;
    client.OnDone([&](WAVEHDR&) {
        if (++callbacks == callback) {
            Die();
        }
    });
    for (int life = 0; life < 100 && client.Open(device, Format44100) == MMSYSERR_NOERROR; ++life) {
        for (unsigned i = 0; i < 6; ++i) {
            Give(client);
        }
        cards.Advance(30 * Millisecond);
        client.Stop();
        client.Start();
        cards.Advance(30 * Millisecond);
        client.Shut();
        client.Forget();
    }
}

// Hears how it is to die, which is also its word to begin: the device, 0 to 3 outputs and 4 to 7 inputs; the
// last request that it makes, 0 for none; or else the callback in which it is killed, with the lock of all
// processes.
void Victim(Companion& test) {
    const auto device = static_cast<UINT>(test.Hear());
    const auto request = static_cast<unsigned>(test.Hear());
    const auto callback = static_cast<unsigned>(test.Hear());
    simulator::Simulator cards({.Cards = 0, .Time = simulator::TimeKind::Stepped});
    if (request != 0) {
        cards.AddFault({.What = Fault::Kind::Die, .Code = Fault::AnyCode, .Nth = request});
    }
    if (device < PortsOfDirection) {
        LiveToDeath<WavePlayer>(cards, device, callback);
    } else {
        LiveToDeath<WaveRecorder>(cards, device - PortsOfDirection, callback);
    }
    Die();
}

void Begin(Companion& victim, UINT device, unsigned request, unsigned callback) {
    victim.Tell(device);
    victim.Tell(request);
    victim.Tell(callback);
}

// Plays while the others die: every buffer is heard, whole and in order, and comes back once.
void Survive(Companion& test) {
    constexpr unsigned Buffers = 60;
    test.Hear();
    Program program(2);
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
    program.Cards.Advance(10 * 1000 * Millisecond);
    EXPECT_EQ(player.DoneCount(), Buffers);
    EXPECT_TRUE(program.Cards.Played(0, Port::Analog) == Sound(Format44100, all));
    test.Tell(player.Close());
    test.Hear();
}

template <typename Client>
void ExpectFree(simulator::Simulator& cards, UINT device, const WaveFormat& format) {
    SCOPED_TRACE(device);
    Client client;
    EXPECT_EQ(client.Open(device, format), MMSYSERR_NOERROR);
    Give(client);
    cards.Advance(50 * Millisecond);
    EXPECT_EQ(client.DoneCount(), 1u);
    EXPECT_EQ(client.Close(), MMSYSERR_NOERROR);
}

// Every port opens and waits for nobody to start: at the rate of the dead, and at another.
void Audit(Companion& test) {
    test.Hear();
    Program program;
    waveOutGetNumDevs();  // from now on the table is as the others leave it
    test.Tell(0);
    test.Hear();
    for (const WaveFormat& format : {Format44100, Format48000}) {
        for (UINT device = 0; device < PortsOfDirection; ++device) {
            program.Cards.SetDigitalInputRate(device / 2, format.Get()->nSamplesPerSec);
            ExpectFree<WavePlayer>(program.Cards, device, format);
            ExpectFree<WaveRecorder>(program.Cards, device, format);
        }
    }
    test.Tell(0);
}

TEST_F(KilledProgramsTest, TheOthersGoOn) {
    constexpr unsigned Rounds = 12;
    std::mt19937 random(20);
    const auto pick = [&random](unsigned most) { return static_cast<unsigned>(random() % most) + 1; };
    for (unsigned round = 0; round < Rounds && !HasFailure(); round += RoundStep) {
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
            Begin(*victims[device - 1], device, inCallback ? 0 : pick(400), inCallback ? pick(30) : 0);
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

// Plays a buffer on the device that it hears of, until it is killed.
void PlayOn(Companion& test) {
    const auto device = static_cast<UINT>(test.Hear());
    const Program program;
    WavePlayer player;
    test.Tell(player.Open(device, Format44100));
    test.Tell(player.Write(Pattern(4000)));
    test.Hear();
}

// A dead program still counts as playing. The streams of the next one begin together all the same.
TEST_F(KilledProgramsTest, TheNextBeginsARunOfItsOwn) {
    Companion victim(PlayOn);
    DriverTest::Follow(1, 0);
    Program program(2);
    waveOutGetNumDevs();  // from now on the table is as the victim leaves it
    ASSERT_EQ(victim.Ask(), NoError);
    ASSERT_EQ(victim.Hear(), NoError);
    victim.Kill();

    WavePlayer players[2];
    for (UINT device : {1u, 2u}) {
        ASSERT_EQ(players[device - 1].Open(device, Format44100), MMSYSERR_NOERROR);
    }
    for (WavePlayer& player : players) {
        EXPECT_EQ(player.Write(Pattern(4000)), MMSYSERR_NOERROR);
        program.Cards.Advance(50 * Millisecond);
    }
    EXPECT_EQ(players[0].DoneCount() + players[1].DoneCount(), 2u);
    EXPECT_EQ(program.Cards.Output(0, Port::Digital).StartFrame,
              program.Cards.Output(1, Port::Analog).StartFrame);
}

// The dead program's card has left its master since.
TEST_F(KilledProgramsTest, AStreamLeavesTheClockThatItWasOpenedOn) {
    Companion victim(PlayOn);
    DriverTest::Follow(1, 0);
    DriverTest::StoreText(0, TEXT("Name"), u"A");
    DriverTest::StoreText(1, TEXT("Name"), u"B");
    const Program program(2);
    const DriverLibrary library;
    ASSERT_EQ(victim.Ask(2), NoError);
    ASSERT_EQ(victim.Hear(), NoError);
    WavePlayer direct[2];
    for (const UINT device : {1u, 3u}) {  // cards in direct mode may change their clocks
        ASSERT_EQ(direct[device / 2].Open(device, Format44100), MMSYSERR_NOERROR);
        ASSERT_EQ(waveOutMessage(direct[device / 2].Handle(), DirectMode, 0, 0), MMSYSERR_NOERROR);
    }
    Sheet sheet(library);
    ClockTreeUser(sheet.Show(u"Clocks + Sync").Window()).Command(u"B", u'S');
    sheet.Accept();
    for (WavePlayer& player : direct) {
        player.Shut();
    }
    victim.Kill();
    WavePlayer player(0, Format48000);
}

// A thread looks whether the program is dead, and has its channel for the moment.
TEST_F(KilledProgramsTest, ADeadOnesPortIsFreeAtOnce) {
    constexpr unsigned HasTheChannel = 3;  // the request that gives it back again
    Companion victim(PlayOn);
    const Program program(1);
    waveOutGetNumDevs();
    ASSERT_EQ(victim.Ask(0), NoError);
    ASSERT_EQ(victim.Hear(), NoError);
    victim.Kill();

    WavePlayer players[2];
    RequestHold hold(HasTheChannel, RequestHold::Where::Before);
    auto looking = std::async(std::launch::async, [&] {
        const RequestHold::Watch watch(hold);
        return players[1].Open(1, Format48000);
    });
    EXPECT_EQ(hold.AwaitHeldOrEnded(), RequestHold::State::Held);
    auto opening = std::async(std::launch::async, [&] { return players[0].Open(0, Format48000); });
    opening.wait_for(std::chrono::milliseconds(100));  // it is refused, or waits
    hold.LetGo();
    EXPECT_EQ(opening.get(), MMSYSERR_NOERROR);
    EXPECT_EQ(looking.get(), MMSYSERR_NOERROR);
}

// A program dies while it closes: the port is not open any more, and nothing counts it.
TEST_F(KilledProgramsTest, AtAnyRequestOfAClose) {
    for (unsigned request = 1; request <= 14; request += RoundStep) {
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
        const Program program(2);
        EXPECT_EQ(auditor.Ask(), 0);
        EXPECT_EQ(victim.Ask(request), NoError);
        EXPECT_EQ(victim.Hear(), NoError);
        EXPECT_EQ(victim.Hear(), Companion::Gone);
        victim.Kill();
        EXPECT_EQ(auditor.Ask(), 0);
        tally::Add(tally::Rounds, 1);
    }
}

// A program dies in the middle of the discovery, the first one while it reads a card, and another one waits
// for the end of it.
TEST_F(KilledProgramsTest, InTheDiscovery) {
    for (unsigned request = 3; request <= 160; request += 13 * RoundStep) {
        SCOPED_TRACE(request);
        machine_.Renew();
        Companion victim(Victim);
        Companion next([](Companion& test) {
            test.Hear();
            Program program;
            EXPECT_EQ(waveOutGetNumDevs(), 4u);
            EXPECT_EQ(DriverTest::DeviceName(0), u"First Analog");
            EXPECT_EQ(DriverTest::DeviceName(2), u"Second Analog");
            test.Tell(0);
        });
        DriverTest::StoreText(0, TEXT("Name"), u"First");
        DriverTest::StoreText(1, TEXT("Name"), u"Second");
        const Program program(2);
        Begin(victim, 0, request, 0);
        EXPECT_EQ(next.Ask(), 0);
        EXPECT_EQ(victim.Hear(), Companion::Gone);
        victim.Kill();
        tally::Add(tally::Rounds, 1);
    }
}

}  // namespace
