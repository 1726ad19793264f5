// Who has a channel: at most one open file among those of all processes. When a process dies, its claims no
// longer count. The machine's lock is held by the caller of everything here.
#pragma once

#include <cstdint>

#include "simulator/machine/machine_state.h"

namespace simulator {

bool IsClaimed(const ChannelState& channel);

// By anybody, on any card.
bool AnyClaimed(const MachineState& machine);

// False when another file has the channel. What a process that has died left behind in it is cleared away.
bool ClaimChannel(MachineState& machine, unsigned card, unsigned channel, uint32_t file, int64_t now);

// The claimed channel stops and is free.
void GiveUpChannel(MachineState& machine, unsigned card, unsigned channel, int64_t now);

}  // namespace simulator
