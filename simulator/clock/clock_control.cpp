#include "simulator/clock/clock_control.h"

#include <algorithm>

#include "simulator/card/register_map.h"
#include "simulator/channels/channel_run.h"
#include "simulator/clock/clock_source.h"
#include "simulator/clock/converters.h"
#include "simulator/clock/rate_measurement.h"

namespace simulator {
namespace {

constexpr int64_t FaultPeriods = 8;
constexpr uint32_t LeastLag = 3;  // frames

// --- giving a card its clock ---------------------------------------------------------------------

// A card that counts along with another has that one's clock. A clock that is as it was goes on. Any other
// begins at `now`, with the count of the card that it counts along with, or else with its own.
SampleClock ClockFrom(const MachineState& machine, unsigned card, const ClockSource& source, uint32_t rate,
                      int64_t now) {
    const CardState& state = machine.Cards[card];
    const bool countsAlong = source.Valid && source.Counter != card;
    const SampleClock& counted = machine.Cards[countsAlong ? source.Counter : card].Clock;
    if (countsAlong && counted.Rate == rate) {
        return counted;
    }
    const bool asItWas =
        state.Clock.Rate == rate && state.Clock.Drift == source.Drift && state.Supplier == source.Supplier;
    return asItWas ? state.Clock : SampleClock{now, counted.FramesAt(now), rate, source.Drift};
}

// A card is late, each by another number of frames, from a change of its clock until the next resync pulse. A
// card that runs on its own clock and is held meanwhile does not get late.
uint32_t LagOn(const CardState& state, unsigned card, const ClockSource& source, uint32_t rate) {
    const bool changed = state.Supplier != source.Supplier || state.Clock.Rate != rate;
    if (!changed || (source.Supplier == card && state.Held())) {
        return changed && state.Supplier != card ? 0 : state.Lag;
    }
    return LeastLag + card;
}

// The card's ticks go on from where they are.
void ChangeClock(CardState& state, const SampleClock& clock, int64_t now) {
    const uint64_t tick = state.TickAt(now);
    state.Clock = clock;
    state.TickOffset = static_cast<int64_t>(tick - clock.FramesAt(now));
}

bool IsFaultyAt(const CardState& card, int64_t now) {
    return !card.ClockValid && now - card.InvalidSince >= FaultPeriods * Second / NominalRate(card);
}

void NoteValidity(CardState& card, bool valid, int64_t now) {
    if (card.ClockValid && !valid) {
        card.InvalidSince = now;
    } else if (valid) {
        card.FaultLatched = card.FaultLatched || IsFaultyAt(card, now);
    }
    card.ClockValid = valid;
}

void Install(MachineState& machine, unsigned card, const ClockSource& source, int64_t now) {
    CardState& state = machine.Cards[card];
    const uint32_t rate = source.Valid ? AtSpeed(source.Rate, state) : 0;
    const SampleClock clock = ClockFrom(machine, card, source, rate, now);
    state.Lag = LagOn(state, card, source, rate);
    ChangeClock(state, clock, now);
    state.Supplier = source.Supplier;
    NoteValidity(state, source.Valid, now);
}

bool WaitsForReceiver(const CardState& card) {
    return RunsOnDigitalInput(card) && card.CardMeasurement.ReceiverOn && !card.ClockValid;
}

}  // namespace

// A card that counts along with another comes after it, so the clocks settle in as many rounds as the
// longest chain of cables and link has cards.
void ResolveClocks(MachineState& machine, int64_t now) {
    bool settled = false;
    for (unsigned round = 0; !settled && round <= machine.CardCount; ++round) {
        settled = true;
        for (unsigned card = 0; card < machine.CardCount; ++card) {
            const SampleClock before = machine.Cards[card].Clock;
            Install(machine, card, SelectedSource(machine, card, now), now);
            settled = settled && machine.Cards[card].Clock == before;
        }
    }
}

int64_t NextClockEvent(const MachineState& machine, int64_t now) {
    int64_t next = Never;
    for (unsigned card = 0; card < machine.CardCount; ++card) {
        const CardState& state = machine.Cards[card];
        if (WaitsForReceiver(state) && state.CardMeasurement.ReceiverReady > now) {
            next = std::min(next, state.CardMeasurement.ReceiverReady);
        }
    }
    return next;
}

void SettleReceivers(MachineState& machine, int64_t now) {
    for (unsigned card = 0; card < machine.CardCount; ++card) {
        const CardState& state = machine.Cards[card];
        const int64_t ready = state.CardMeasurement.ReceiverReady;
        if (WaitsForReceiver(state) && ready <= now && SelectedSource(machine, card, ready).Valid) {
            ResolveClocks(machine, ready);
        }
    }
}

bool TakeClockFault(CardState& card, int64_t now) {
    const bool fault = card.FaultLatched || IsFaultyAt(card, now);
    card.FaultLatched = false;
    if (!card.ClockValid) {
        card.InvalidSince = now;
    }
    return fault;
}

// --- what a write to a register sets off -----------------------------------------------------------

void DigitalReceiverWritten(const RegisterChange& change) {
    ControlCardReceiver(change);
    ResolveClocks(change.Machine, change.Now);
}

void PortReceiverWritten(const RegisterChange& change) {
    ControlPortReceiver(change);
}

void ClockControlWritten(const RegisterChange& change) {
    ResolveClocks(change.Machine, change.Now);
    FollowResyncPulse(change);
    ApplyHold(change.State(), change.Now);
}

void DigitalTransmitterWritten(const RegisterChange& change) {
    FollowTransmitPulse(change);
    ResolveClocks(change.Machine, change.Now);
}

void ClockSelectWritten(const RegisterChange& change) {
    ResolveClocks(change.Machine, change.Now);
}

void StartHoldWritten(const RegisterChange& change) {
    change.State().HoldsSeen |= change.After;
    const uint8_t released = change.Before & static_cast<uint8_t>(~change.After) & (HoldOutputs | HoldInputs);
    if (released != 0) {
        ReleaseWaiting(change.Machine, change.Card, released, change.Now);
    }
}

}  // namespace simulator
