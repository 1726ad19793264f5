#include "simulator/clock/clock_source.h"

#include "simulator/card/register_map.h"

namespace simulator {
namespace {

constexpr uint32_t TopSingleSpeedRate = 54000;

uint8_t SelectedBits(const CardState& card) {
    return card.CardFile[card_register::ClockSelect] & SourceMask;
}
bool IsBroken(const CardState& card, uint8_t source) {
    return card.Broken[source >> SourceShift];
}
ClockSource NoClock(unsigned card) {
    return {.Valid = false, .Rate = 0, .Drift = 0, .Supplier = card, .Counter = card};
}

// Sources are followed along link and cables; `depth` ends the search when they go in a circle.
ClockSource FollowSelected(const MachineState& machine, unsigned card, int64_t now, unsigned depth);

// The clock of the card at the other end of the cable, at the rate that it sends. A card that is at both ends
// locks to its own oscillator.
ClockSource FollowCable(const MachineState& machine, unsigned card, int64_t now, unsigned depth) {
    const CardState& state = machine.Cards[card];
    const unsigned sender = state.DigitalInputCable;
    if (depth > MaxCards || sender >= machine.CardCount || !TransmitterRuns(machine.Cards[sender])) {
        return NoClock(card);
    }
    if (sender == card && RunsOnDigitalInput(state)) {
        return {true, NominalRate(state), state.Drift, card, card};
    }
    ClockSource source = FollowSelected(machine, sender, now, depth + 1);
    source.Rate = AtSpeed(source.Rate, machine.Cards[sender]);
    source.Supplier = card;
    source.Counter = sender;
    return source;
}

ClockSource FollowArriving(const MachineState& machine, unsigned card, int64_t now, unsigned depth) {
    const CardState& state = machine.Cards[card];
    switch (state.DigitalInputClocking) {
    case DigitalClocking::WithCard: {
        const uint32_t rate = RunsOnDigitalInput(state) ? NominalRate(state) : state.Clock.Rate;
        return {rate != 0, rate, state.Drift, card, card};
    }
    case DigitalClocking::Cabled:
        return FollowCable(machine, card, now, depth);
    default:
        return {state.DigitalInputRate != 0, state.DigitalInputRate, 0, card, card};
    }
}

// For any source but the link.
ClockSource FollowOwn(const MachineState& machine, unsigned card, int64_t now, unsigned depth) {
    const CardState& state = machine.Cards[card];
    switch (SelectedBits(state)) {
    case SourceDigital: {
        ClockSource source = FollowArriving(machine, card, now, depth);
        source.Valid = source.Valid && !IsBroken(state, SourceDigital) && state.CardMeasurement.Settled(now);
        return source;
    }
    case SourcePll:
        return {!IsBroken(state, SourcePll), NominalRate(state), state.Drift, card, card};
    default:
        return {true, NominalRate(state), state.Drift, card, card};
    }
}

// The one card that drives the link; MaxCards when none does, or when two drive against each other.
unsigned LinkDriver(const MachineState& machine) {
    unsigned driver = MaxCards;
    for (unsigned card = 0; card < machine.CardCount; ++card) {
        const CardState& state = machine.Cards[card];
        if (state.Present && (state.CardFile[card_register::ClockSelect] & DriveLinkBit) != 0) {
            if (driver != MaxCards) {
                return MaxCards;
            }
            driver = card;
        }
    }
    return driver;
}

ClockSource FollowLink(const MachineState& machine, unsigned card, int64_t now, unsigned depth) {
    const unsigned driver = LinkDriver(machine);
    if (driver == MaxCards || driver == card || SelectedBits(machine.Cards[driver]) == SourceLink) {
        return NoClock(card);
    }
    ClockSource source = FollowOwn(machine, driver, now, depth);
    source.Rate = AtSpeed(source.Rate, machine.Cards[driver]);
    source.Valid = source.Valid && !IsBroken(machine.Cards[card], SourceLink);
    source.Supplier = source.Valid ? driver : card;
    source.Counter = source.Supplier;
    return source;
}

ClockSource FollowSelected(const MachineState& machine, unsigned card, int64_t now, unsigned depth) {
    return SelectedBits(machine.Cards[card]) == SourceLink ? FollowLink(machine, card, now, depth)
                                                           : FollowOwn(machine, card, now, depth);
}

}  // namespace

uint32_t NominalRate(const CardState& card) {
    return RateOfCode[card.CardFile[card_register::ClockSelect] & RateCodeMask];
}

uint32_t AtSpeed(uint32_t rate, const CardState& card) {
    const bool doubled = (card.CardFile[card_register::ClockControl] & DoubleSpeedBit) != 0;
    if (rate > TopSingleSpeedRate) {
        return doubled ? rate : rate / 2;
    }
    return doubled ? rate * 2 : rate;
}

ClockSource SelectedSource(const MachineState& machine, unsigned card, int64_t now) {
    return FollowSelected(machine, card, now, 0);
}

ClockSource ArrivingClock(const MachineState& machine, unsigned card, int64_t now) {
    return FollowArriving(machine, card, now, 0);
}

bool RunsOnDigitalInput(const CardState& card) {
    return SelectedBits(card) == SourceDigital;
}

bool TransmitterRuns(const CardState& card) {
    return card.Present && card.Pulses.Transmits;
}

}  // namespace simulator
