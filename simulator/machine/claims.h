// Who has a channel. One open file at a time, among all processes; a claim whose process has died is
// as good as none. The machine's lock is held by the caller of everything here.
#pragma once

#include <cstdint>

#include "simulator/machine/machine_state.h"

namespace simulator {

bool IsClaimed(const ChannelState& channel);

// False when another file has the channel. What a dead process left of it is cleared away.
bool ClaimChannel(MachineState& machine, unsigned card, unsigned channel, uint32_t file, int64_t now);

// The claimed channel stops and is free.
void GiveUpChannel(MachineState& machine, unsigned card, unsigned channel, int64_t now);

}  // namespace simulator
