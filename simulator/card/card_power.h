// A card's life apart from its registers: power-up, soft reset, vanishing. The machine's lock is held
// by the caller of everything here.
#pragma once

#include <cstdint>

#include "simulator/machine/machine_state.h"

namespace simulator {

// A new card: present, nothing plugged in, with an identity and a configuration space of its own. The caller
// calls ResolveClocks when all cards are made.
void MakeCard(CardState& card, unsigned ordinal);

// Registers to their power-up values, channels disarmed and not acquired. Claims stay.
void PowerUp(MachineState& machine, unsigned card, int64_t now);

// The kernel driver's state: transfers off, channels disarmed, positions 0, the port registers and
// the start holds cleared. Queued buffers are the caller's to give back; what InitCard programs stays.
void SoftResetCard(MachineState& machine, unsigned card, int64_t now);

// The bits of a configuration byte that a write changes.
uint8_t WritablePciBits(unsigned offset);

}  // namespace simulator
