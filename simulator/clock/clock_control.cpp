#include "simulator/clock/clock_control.h"

#include <algorithm>

#include "simulator/channels/channel_run.h"

namespace simulator {
namespace {

constexpr int64_t Second = 1000000000;
constexpr int64_t ReceiverSettling = Second / 20;
constexpr int64_t FaultPeriods = 8;
constexpr int64_t ResyncPulse = 1000;
constexpr uint64_t MeasuredFrames = 192;  // one channel-status block
constexpr uint32_t TopSingleSpeedRate = 54000;
constexpr uint8_t NoMeasurement = 0x07;

constexpr uint8_t DoubleSpeedBit = 0x08;  // card 17
constexpr uint8_t ResyncBit = 0x80;       // card 17
constexpr uint8_t DriveLinkBit = 0x10;    // card 32
constexpr uint8_t SourceMask = 0x60;      // card 32
constexpr uint8_t MeasureBit = 0x80;      // card 9, port 1
constexpr uint8_t TransmitBit = 0x01;     // card 25

constexpr std::array<uint32_t, 8> RateOfCode = {96000, 88200, 48000, 44100, 32000, 22050, 8000, 11025};

uint8_t SourceOf(const CardState& card) {
    return card.CardFile[32] & SourceMask;
}
uint32_t NominalRate(const CardState& card) {
    return RateOfCode[card.CardFile[32] & 0x07];
}
bool IsBroken(const CardState& card, uint8_t source) {
    return card.Broken[source / 0x20];
}

bool ReceiverSettled(const Measurement& measurement, int64_t now) {
    return measurement.ReceiverOn && now >= measurement.ReceiverReady;
}

// The speed that the double-speed bit makes of a rate: the wrong one is off by a factor of two.
uint32_t AtSpeed(uint32_t rate, const CardState& card) {
    const bool doubled = (card.CardFile[17] & DoubleSpeedBit) != 0;
    if (rate > TopSingleSpeedRate) {
        return doubled ? rate : rate / 2;
    }
    return doubled ? rate * 2 : rate;
}

struct Source {
    bool Valid;
    uint32_t Rate;
    int32_t Drift;
    uint32_t Supplier;  // the card whose start holds count: itself, or the link's driver
    uint32_t Counter;   // the card whose frames it counts along with: itself, the driver, a cable's sender
};

// Sources are followed along link and cables; `depth` ends the search when they go in a circle.
Source ClockSource(const MachineState& machine, unsigned card, int64_t now, unsigned depth);

// What arrives at the digital input.
Source ArrivalOf(const MachineState& machine, unsigned card, int64_t now, unsigned depth) {
    const CardState& state = machine.Cards[card];
    const bool runsOnArrival = SourceOf(state) == SourceDigital;
    switch (state.DigitalInputClocking) {
    case DigitalClocking::WithCard: {
        const uint32_t rate = runsOnArrival ? NominalRate(state) : state.Clock.Rate;
        return {rate != 0, rate, state.Drift, card, card};
    }
    case DigitalClocking::Cabled: {
        const unsigned sender = state.DigitalInputCable;
        if (depth > MaxCards || sender >= machine.CardCount || !TransmitterRuns(machine.Cards[sender])) {
            return {false, 0, 0, card, card};
        }
        Source source = ClockSource(machine, sender, now, depth + 1);
        source.Rate = AtSpeed(source.Rate, machine.Cards[sender]);
        source.Supplier = card;
        source.Counter = sender;
        return source;
    }
    default:
        return {state.DigitalInputRate != 0, state.DigitalInputRate, 0, card, card};
    }
}

// For any source but the link.
Source OwnSource(const MachineState& machine, unsigned card, int64_t now, unsigned depth) {
    const CardState& state = machine.Cards[card];
    switch (SourceOf(state)) {
    case SourceDigital: {
        Source source = ArrivalOf(machine, card, now, depth);
        source.Valid =
            source.Valid && !IsBroken(state, SourceDigital) && ReceiverSettled(state.CardMeasurement, now);
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
        if (state.Present && (state.CardFile[32] & DriveLinkBit) != 0) {
            if (driver != MaxCards) {
                return MaxCards;
            }
            driver = card;
        }
    }
    return driver;
}

Source LinkSource(const MachineState& machine, unsigned card, int64_t now, unsigned depth) {
    const unsigned driver = LinkDriver(machine);
    if (driver == MaxCards || driver == card || SourceOf(machine.Cards[driver]) == SourceLink) {
        return {false, 0, 0, card, card};
    }
    Source source = OwnSource(machine, driver, now, depth);
    source.Rate = AtSpeed(source.Rate, machine.Cards[driver]);
    source.Valid = source.Valid && !IsBroken(machine.Cards[card], SourceLink);
    source.Supplier = source.Valid ? driver : card;
    source.Counter = source.Supplier;
    return source;
}

Source ClockSource(const MachineState& machine, unsigned card, int64_t now, unsigned depth) {
    return SourceOf(machine.Cards[card]) == SourceLink ? LinkSource(machine, card, now, depth)
                                                       : OwnSource(machine, card, now, depth);
}

void NoteValidity(CardState& card, bool valid, int64_t now) {
    if (card.ClockValid && !valid) {
        card.InvalidSince = now;
    } else if (!card.ClockValid && valid) {
        const bool faulted = now - card.InvalidSince >= FaultPeriods * Second / NominalRate(card);
        card.FaultLatched = card.FaultLatched || faulted;
    }
    card.ClockValid = valid;
}

void Install(MachineState& machine, unsigned card, const Source& source, int64_t now) {
    CardState& state = machine.Cards[card];
    const CardState& counter = machine.Cards[source.Counter];
    const uint32_t rate = source.Valid ? AtSpeed(source.Rate, state) : 0;
    const bool sameSpeed = state.Clock.Rate == rate && state.Clock.Drift == source.Drift;
    const bool counts = source.Valid && source.Counter != card;

    SampleClock clock{now, counts ? counter.Clock.FramesAt(now) : state.Clock.FramesAt(now), rate,
                      source.Drift};
    if (counts && counter.Clock.Rate == rate) {
        clock = counter.Clock;
    } else if (sameSpeed && state.Supplier == source.Supplier) {
        clock = state.Clock;
    }
    if (source.Supplier == card) {
        state.Lag = 0;
    } else if (state.Supplier != source.Supplier || state.Clock.Rate != rate) {
        state.Lag = 3 + card;
    }
    const uint64_t tick = state.TickAt(now);
    state.Clock = clock;
    state.TickOffset = static_cast<int64_t>(tick - clock.FramesAt(now));
    state.Supplier = source.Supplier;
    NoteValidity(state, source.Valid, now);
}

// The code of a rate on the digital input, bits 3 to 5; none for one that the receiver does not know.
uint8_t RateClass(uint32_t rate) {
    for (unsigned code = 0; code < 5; ++code) {
        const uint32_t nominal = RateOfCode[code];
        if (rate > nominal - nominal / 50 && rate < nominal + nominal / 50) {
            return static_cast<uint8_t>((3 + code) << 3);
        }
    }
    return 0;
}

// The measure bit: a pulse of at least one frame, whose end starts the measurement.
void FollowMeasurePulse(Measurement& measurement, const RegisterChange& change) {
    const CardState& card = change.State();
    if (change.Rose(MeasureBit)) {
        measurement.PulseRose = change.Now;
    }
    if (!change.Fell(MeasureBit) || card.Clock.Rate == 0 ||
        change.Now - measurement.PulseRose < Second / card.Clock.Rate) {
        return;
    }
    const uint32_t arriving = DigitalInputRate(change.Machine, change.Card, change.Now);
    const bool signal = ReceiverSettled(measurement, change.Now) && arriving != 0;
    measurement.Running = true;
    measurement.ReadyTick = card.TickAt(change.Now) + MeasuredFrames;
    measurement.NextResult = signal ? RateClass(arriving) : NoMeasurement;
}

uint8_t ResultOf(Measurement& measurement, const CardState& card, int64_t now) {
    if (measurement.Running && card.TickAt(now) >= measurement.ReadyTick) {
        measurement.Running = false;
        measurement.Result = measurement.NextResult;
    }
    return measurement.Result;
}

bool IsSettling(const CardState& card) {
    return SourceOf(card) == SourceDigital && card.CardMeasurement.ReceiverOn && !card.ClockValid;
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
            Install(machine, card, ClockSource(machine, card, now, 0), now);
            settled = settled && machine.Cards[card].Clock == before;
        }
    }
}

int64_t NextClockEvent(const MachineState& machine, int64_t now) {
    int64_t next = Never;
    for (unsigned card = 0; card < machine.CardCount; ++card) {
        const CardState& state = machine.Cards[card];
        if (IsSettling(state) && state.CardMeasurement.ReceiverReady > now) {
            next = std::min(next, state.CardMeasurement.ReceiverReady);
        }
    }
    return next;
}

void SettleReceivers(MachineState& machine, int64_t now) {
    for (unsigned card = 0; card < machine.CardCount; ++card) {
        const CardState& state = machine.Cards[card];
        const int64_t ready = state.CardMeasurement.ReceiverReady;
        if (IsSettling(state) && ready <= now && OwnSource(machine, card, ready, 0).Valid) {
            ResolveClocks(machine, ready);
        }
    }
}

bool TakeClockFault(CardState& card, int64_t now) {
    const bool failing =
        !card.ClockValid && now - card.InvalidSince >= FaultPeriods * Second / NominalRate(card);
    const bool fault = card.FaultLatched || failing;
    card.FaultLatched = false;
    if (!card.ClockValid) {
        card.InvalidSince = now;
    }
    return fault;
}

bool TransmitterRuns(const CardState& card) {
    return card.Present && (card.CardFile[25] & TransmitBit) != 0;
}

uint32_t DigitalInputRate(const MachineState& machine, unsigned card, int64_t now) {
    const Source arriving = ArrivalOf(machine, card, now, 0);
    return arriving.Valid ? arriving.Rate : 0;
}

uint8_t MeasuredByCard(CardState& card, int64_t now) {
    return ResultOf(card.CardMeasurement, card, now);
}
uint8_t MeasuredByPort(CardState& card, int64_t now) {
    return ResultOf(card.PortMeasurement, card, now);
}

void ResetMeasurements(CardState& card) {
    card.CardMeasurement = Measurement{};
    card.PortMeasurement = Measurement{};
    card.CardMeasurement.Result = NoMeasurement;
    card.PortMeasurement.Result = NoMeasurement;
}

void ReceiverControlWritten(const RegisterChange& change) {
    Measurement& measurement = change.State().CardMeasurement;
    measurement.ReceiverOn = (change.After & 0x03) == 0;
    if (change.Fell(0x01)) {
        measurement.ReceiverReady = change.Now + ReceiverSettling;
    }
    FollowMeasurePulse(measurement, change);
    ResolveClocks(change.Machine, change.Now);
}

void PortReceiverWritten(const RegisterChange& change) {
    Measurement& measurement = change.State().PortMeasurement;
    measurement.ReceiverOn = (change.After & 0x01) == 0;
    if (change.Fell(0x01)) {
        measurement.ReceiverReady = change.Now + ReceiverSettling;
    }
    FollowMeasurePulse(measurement, change);
}

void ClockControlWritten(const RegisterChange& change) {
    CardState& card = change.State();
    if (change.Fell(ResyncBit)) {
        card.ResyncFell = change.Now;
    }
    if (change.Rose(ResyncBit) && change.Now - card.ResyncFell >= ResyncPulse && card.ClockValid) {
        card.Lag = 0;
    }
    ResolveClocks(change.Machine, change.Now);
    ApplyHold(card, change.Now);
}

void TransmitterWritten(const RegisterChange& change) {
    ResolveClocks(change.Machine, change.Now);
}

void ClockSelectWritten(const RegisterChange& change) {
    ResolveClocks(change.Machine, change.Now);
}

void StartHoldWritten(const RegisterChange& change) {
    const uint8_t released = change.Before & static_cast<uint8_t>(~change.After) & 0x03;
    if (released != 0) {
        ReleaseWaiting(change.Machine, change.Card, released, change.Now);
    }
}

}  // namespace simulator
