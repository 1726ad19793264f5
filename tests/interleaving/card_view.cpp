#include "tests/interleaving/card_view.h"

namespace interleaving {
namespace {

using simulator::CardState;
using simulator::ChannelState;
using simulator::Machine;
using simulator::host::MachineGuard;

// Mixer inputs that a port's playback feeds.
constexpr unsigned GainsOfOutput[2][2] = {{2, 6}, {3, 7}};

std::string Describe(const StreamPlan& plan, bool buffers) {
    const CardState& card = Machine().Cards[plan.Card];
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
    if (!plan.Output) {
        return text;  // how many an input has filled follows from the time that passed
    }
    text += " at gains";
    for (const unsigned gain : GainsOfOutput[plan.Port]) {
        text += " " + std::to_string(card.MixerFile[gain]);
    }
    return buffers ? text + ", " + std::to_string(channel.Tally.BuffersInFlight) + " buffers" : text;
}

}  // namespace

ChannelState ChannelOf(const StreamPlan& plan) {
    const MachineGuard guard;
    return Machine().Cards[plan.Card].Channels[plan.Channel()];
}

std::string DescribeCards(const Setting& setting, bool buffers) {
    const MachineGuard guard;
    std::string text;
    for (size_t i = 0; i < setting.Streams.size(); ++i) {
        text += "\n    stream " + std::to_string(i) + ": " + Describe(setting.Streams[i], buffers);
    }
    return text;
}

}  // namespace interleaving
