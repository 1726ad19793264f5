// Several processes on one machine.
#include "platform/machine.h"

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include "tests/simulator/card_file.h"

namespace simulator_tests {
namespace {

using namespace simulator;

constexpr uint32_t AnalogOut = 2;

// Another process, made before this one has a thread or a simulator, and a line of talk with it.
class OtherProcess {
public:
    explicit OtherProcess(const std::function<void(OtherProcess&)>& body) {
        int down[2];
        int up[2];
        EXPECT_EQ(pipe(down), 0);
        EXPECT_EQ(pipe(up), 0);
        pid_ = fork();
        if (pid_ == 0) {
            in_ = down[0];
            out_ = up[1];
            body(*this);
            _exit(testing::Test::HasFailure() ? 1 : 0);
        }
        in_ = up[0];
        out_ = down[1];
        close(up[1]);
        close(down[0]);
    }
    void Tell() const { EXPECT_EQ(write(out_, "x", 1), 1); }
    void Wait() const {
        char byte = 0;
        EXPECT_EQ(read(in_, &byte, 1), 1);
    }
    void Kill() const {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    int End() const {
        int status = 0;
        waitpid(pid_, &status, 0);
        return status;
    }

private:
    pid_t pid_;
    int in_;
    int out_;
};

class SimulatorMachine : public testing::Test {
protected:
    SimulatorMachine() : Name("simulator-test-" + std::to_string(getpid())) {}
    ~SimulatorMachine() override {
        platform::UseMachine("");
        platform::RemoveMachine(Name);
    }
    const std::string Name;
};

TEST_F(SimulatorMachine, CardsAreSharedAndADeadProcessLetsGo) {
    const OtherProcess other([&](OtherProcess& parent) {
        platform::UseMachine(Name);
        Simulator sim({.Cards = 2});
        const CardFile file(1, AnalogOut);
        file.WriteCard(32, 0x04, 0x07);
        parent.Tell();
        parent.Wait();
    });
    other.Wait();
    platform::UseMachine(Name);
    Simulator sim({.Cards = 0, .Time = TimeKind::Real});
    EXPECT_EQ(sim.CardCount(), 2u);
    EXPECT_EQ(sim.SampleRate(1), 64000u) << "set by the other process, at the power-up speed";
    const CardFile file(1);
    EXPECT_EQ(file.Bind(1, AnalogOut), ERROR_BUSY);
    EXPECT_TRUE(sim.ChannelClaimed(1, AnalogOut));
    EXPECT_EQ(sim.OpenFiles(), 1u);
    other.Kill();
    EXPECT_FALSE(sim.ChannelClaimed(1, AnalogOut));
    EXPECT_EQ(file.Bind(1, AnalogOut), ERROR_SUCCESS);
}

// The thread that looks for other processes delivers completions, too: the mover waits all the same.
TEST_F(SimulatorMachine, SteppedTimeIsExactForAProcessAloneOnANamedMachine) {
    platform::UseMachine(Name);
    Simulator sim({});
    Prepare(0);
    const CardFile file(0, AnalogOut);
    file.WritePort(0, 0xC0);
    std::vector<Frame> frames(44, Both(1));
    CompletionThread thread(file, [&](ULONG_PTR cookie) {
        file.Queue(frames, cookie + 1);
        file.Request(StartTransfer);
    });
    ASSERT_EQ(file.Queue(frames, 1), ERROR_SUCCESS);
    file.Start();
    sim.Advance(2000000);
    EXPECT_EQ(sim.Output(0, Port::Analog).FramesSilent, 0u);
    EXPECT_EQ(sim.Output(0, Port::Analog).FramesPlayed, 2u * 44100 - 1);
}

TEST_F(SimulatorMachine, OneProcessReleasesTheHoldAndMovesTheClockOfAnother) {
    const OtherProcess other([&](OtherProcess& parent) {
        platform::UseMachine(Name);
        Simulator sim({});
        Prepare(0);
        const CardFile file(0, AnalogOut);
        file.WritePort(0, 0xC2);
        file.WriteCard(36, 1);
        std::vector<Frame> frames(441, Both(77));
        CompletionThread thread(file);
        EXPECT_EQ(file.Queue(frames, 1), ERROR_SUCCESS);
        file.Start();
        parent.Tell();
        parent.Wait();
        EXPECT_FALSE(sim.Output(0, Port::Analog).Started);
        parent.Tell();
        thread.WaitFor(1);
        EXPECT_EQ(sim.Played(0, Port::Analog), frames);
    });
    other.Wait();
    platform::UseMachine(Name);
    Simulator sim({.Cards = 0});
    const CardFile control(0, ControlChannel);
    sim.Advance(50000);
    other.Tell();
    other.Wait();
    const uint64_t frame = sim.ClockFrame(0);
    control.WriteCard(36, 0);
    sim.Advance(20000);
    EXPECT_EQ(other.End(), 0);
    EXPECT_EQ(sim.Output(0, Port::Analog).StartFrame, frame + 1);
    EXPECT_EQ(sim.Output(0, Port::Analog).FramesPlayed, 441u);
}

}  // namespace
}  // namespace simulator_tests
