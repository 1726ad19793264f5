#include "simulator/machine/claims.h"

#include <algorithm>

#include "simulator/channels/channel_run.h"

namespace simulator {

bool IsClaimed(const ChannelState& channel) {
    return channel.Owner.Id != 0 && host::IsAlive(channel.Owner);
}

bool AnyClaimed(const MachineState& machine) {
    return std::any_of(machine.Cards.begin(), machine.Cards.begin() + machine.CardCount,
                       [](const CardState& card) {
                           return std::any_of(card.Channels.begin(), card.Channels.end(), IsClaimed);
                       });
}

bool ClaimChannel(MachineState& machine, unsigned card, unsigned channel, uint32_t file, int64_t now) {
    ChannelState& state = machine.Cards[card].Channels[channel];
    if (IsClaimed(state)) {
        return false;
    }
    GiveUpChannel(machine, card, channel, now);
    state.Position = 0;
    state.CountsFromZero = false;
    state.Owner = host::CurrentProcess();
    state.File = file;
    return true;
}

void GiveUpChannel(MachineState& machine, unsigned card, unsigned channel, int64_t now) {
    ReleaseChannelHardware(machine, card, channel, now);
    ChannelState& state = machine.Cards[card].Channels[channel];
    state.Owner = host::Process{};
    state.File = 0;
    state.Tally.BuffersInFlight = 0;
}

}  // namespace simulator
