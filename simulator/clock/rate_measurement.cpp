#include "simulator/clock/rate_measurement.h"

#include "simulator/card/register_map.h"
#include "simulator/clock/clock_source.h"

namespace simulator {
namespace {

constexpr int64_t ReceiverSettling = Second / 20;
constexpr uint64_t MeasuredFrames = 192;  // one channel-status block
constexpr uint8_t NoMeasurement = 0x07;

// Of the rates that a measurement tells apart, the first five by code.
constexpr unsigned KnownRates = 5;
constexpr unsigned FirstRateClass = 3;
constexpr unsigned RateClassShift = 3;
constexpr uint32_t Tolerance = 50;  // a fiftieth up or down

// The measured-rate register's bits for a rate; none for one that the receiver does not know.
uint8_t RateClass(uint32_t rate) {
    for (unsigned code = 0; code < KnownRates; ++code) {
        const uint32_t nominal = RateOfCode[code];
        if (rate > nominal - nominal / Tolerance && rate < nominal + nominal / Tolerance) {
            return static_cast<uint8_t>((FirstRateClass + code) << RateClassShift);
        }
    }
    return 0;
}

// A receiver whose clock is let in before it has settled does not lock; it has to be switched off again.
void SwitchReceiver(Measurement& measurement, const RegisterChange& change, uint8_t offBits) {
    measurement.ReceiverOn = (change.After & offBits) == 0;
    if (change.Fell(ReceiverOff)) {
        measurement.ReceiverReady = change.Now + ReceiverSettling;
    }
    const bool early = (change.After & ReceiverOff) != 0 || change.Now < measurement.ReceiverReady;
    if (change.Fell(ReceiverClockOff & offBits) && early) {
        measurement.ReceiverReady = Never;
    }
}

void StartMeasurement(Measurement& measurement, const RegisterChange& change) {
    const uint32_t arriving = DigitalInputRate(change.Machine, change.Card, change.Now);
    const bool signal = measurement.Settled(change.Now) && arriving != 0;
    const uint8_t seen = signal ? RateClass(arriving) : NoMeasurement;
    measurement.Running = true;
    ++measurement.Count;
    measurement.ReadyTick = change.State().TickAt(change.Now) + MeasuredFrames;
    measurement.NextResult = seen == measurement.Seen ? seen : measurement.Result;
    measurement.Seen = seen;
}

// A pulse of less than one frame goes unnoticed.
void FollowMeasurePulse(Measurement& measurement, const RegisterChange& change) {
    if (change.Rose(MeasureBit)) {
        measurement.PulseRose = change.Now;
    }
    const uint32_t rate = change.State().Clock.Rate;
    if (change.Fell(MeasureBit) && rate != 0 && change.Now - measurement.PulseRose >= Second / rate) {
        StartMeasurement(measurement, change);
    }
}

// The bits beside the class are those of a counter, and the low ones are never those of no measurement. A
// driver measures twice: the top bits go on with every second measurement.
uint8_t ResultOf(Measurement& measurement, const CardState& card, int64_t now) {
    if (measurement.Running && card.TickAt(now) >= measurement.ReadyTick) {
        measurement.Running = false;
        measurement.Result = measurement.NextResult;
    }
    const unsigned top = static_cast<unsigned>(measurement.Count) << 5 & 0xC0u;
    const unsigned low = measurement.Result == NoMeasurement ? 0 : measurement.Count % NoMeasurement;
    return static_cast<uint8_t>(measurement.Result | top | low);
}

}  // namespace

uint32_t DigitalInputRate(const MachineState& machine, unsigned card, int64_t now) {
    const ClockSource arriving = ArrivingClock(machine, card, now);
    return arriving.Valid ? arriving.Rate : 0;
}

uint8_t MeasuredByCard(CardState& card, int64_t now) {
    return ResultOf(card.CardMeasurement, card, now);
}
uint8_t MeasuredByPort(CardState& card, int64_t now) {
    return ResultOf(card.PortMeasurement, card, now);
}

void ResetMeasurements(CardState& card) {
    for (Measurement* measurement : {&card.CardMeasurement, &card.PortMeasurement}) {
        const uint8_t count = measurement->Count;  // comes up with some value or other
        *measurement = Measurement{};
        measurement->Count = count;
        measurement->Result = NoMeasurement;
        measurement->Seen = NoMeasurement;
    }
}

void ControlCardReceiver(const RegisterChange& change) {
    Measurement& measurement = change.State().CardMeasurement;
    SwitchReceiver(measurement, change, ReceiverOff | ReceiverClockOff);
    FollowMeasurePulse(measurement, change);
}

void ControlPortReceiver(const RegisterChange& change) {
    Measurement& measurement = change.State().PortMeasurement;
    SwitchReceiver(measurement, change, ReceiverOff);
    FollowMeasurePulse(measurement, change);
}

}  // namespace simulator
