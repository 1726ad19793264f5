#include "tests/interleaving/card_view.h"

#include "simulator/machine/machine_state.h"

namespace interleaving {
namespace {

using simulator::CardState;
using simulator::ChannelState;
using simulator::Machine;
using simulator::host::MachineGuard;

const ChannelState& ChannelOf(const StreamPlan& plan) {
    return Machine().Cards[plan.Card].Channels[plan.Channel()];
}

// Mixer inputs that a port's playback feeds.
constexpr unsigned GainsOfOutput[2][2] = {{2, 6}, {3, 7}};

std::string DescribeGains(const CardState& card, const StreamPlan& plan) {
    std::string text;
    for (const unsigned gain : GainsOfOutput[plan.Port]) {
        text += " " + std::to_string(card.MixerFile[gain]);
    }
    return " at gains" + text;
}

std::string Describe(const CardState& card, const StreamPlan& plan, bool buffers) {
    const ChannelState& channel = card.Channels[plan.Channel()];
    if (channel.Owner.Id == 0) {
        return "free";
    }
    if (!channel.Acquired) {
        return "released";
    }
    // A transfer moves nothing while the channel is disarmed, ends by itself when there is no buffer, and is
    // asked for again by every start: whether it is on then says nothing.
    std::string text = channel.Armed ? "armed" : "disarmed";
    if (channel.Armed && channel.Tally.BuffersInFlight != 0) {
        text += channel.TransferOn ? ", started" : ", stopped";
    }
    text += channel.Waiting ? " held" : "";
    text += ", " + std::to_string(card.ClockValid ? card.Clock.Rate : 0) + " Hz";
    text += plan.Output ? DescribeGains(card, plan) : "";
    // How many an input has filled follows from the time that passed.
    return buffers && plan.Output ? text + ", " + std::to_string(channel.Tally.BuffersInFlight) + " buffers"
                                  : text;
}

}  // namespace

std::string DescribeCards(const Setting& setting, bool buffers) {
    const MachineGuard guard;
    std::string text;
    for (size_t i = 0; i < setting.Streams.size(); ++i) {
        const StreamPlan& plan = setting.Streams[i];
        text +=
            "\n    stream " + std::to_string(i) + ": " + Describe(Machine().Cards[plan.Card], plan, buffers);
    }
    return text;
}

bool IsClaimed(const StreamPlan& plan) {
    const MachineGuard guard;
    return ChannelOf(plan).Owner.Id != 0;
}

bool IsAcquired(const StreamPlan& plan) {
    const MachineGuard guard;
    return ChannelOf(plan).Acquired;
}

uint64_t FramesMoved(const StreamPlan& plan) {
    const MachineGuard guard;
    return ChannelOf(plan).Tally.FramesMoved;
}

unsigned OwnGain(const StreamPlan& plan) {
    const MachineGuard guard;
    return Machine().Cards[plan.Card].MixerFile[GainsOfOutput[plan.Port][plan.Port]];
}

uint64_t FirstFrame(const StreamPlan& plan) {
    const MachineGuard guard;
    return ChannelOf(plan).Tally.StartFrame;
}

}  // namespace interleaving
