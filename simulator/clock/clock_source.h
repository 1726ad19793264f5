// Where a card's clock comes from: its source, followed along the link and along cables to the card that it
// begins on. Nothing is changed here. The machine's lock is held by the caller of everything here.
#pragma once

#include <array>
#include <cstdint>

#include "simulator/machine/machine_state.h"

namespace simulator {

// Hz, by the rate code of the clock select register. A measurement tells the first five apart.
inline constexpr std::array<uint32_t, 8> RateOfCode = {96000, 88200, 48000, 44100, 32000, 22050, 8000, 11025};

// The rate that the card's rate code asks for, in Hz.
uint32_t NominalRate(const CardState& card);

// The rate that the card makes of one that reaches it: as it is when the double-speed bit fits it, else off
// by a factor of two.
uint32_t AtSpeed(uint32_t rate, const CardState& card);

struct ClockSource {
    bool Valid;
    uint32_t Rate;  // Hz
    int32_t Drift;
    uint32_t Supplier;  // the card whose start holds count: itself, or the link's driver
    uint32_t Counter;   // the card whose frames it counts along with: itself, the driver, a cable's sender
};

// The source that the card's registers select.
ClockSource SelectedSource(const MachineState& machine, unsigned card, int64_t now);

// What arrives at the card's digital input. Valid when there is a signal.
ClockSource ArrivingClock(const MachineState& machine, unsigned card, int64_t now);

bool RunsOnDigitalInput(const CardState& card);

// Whether the card's digital output sends a signal.
bool TransmitterRuns(const CardState& card);

}  // namespace simulator
