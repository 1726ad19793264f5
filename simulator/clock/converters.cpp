#include "simulator/clock/converters.h"

#include "simulator/card/register_map.h"
#include "simulator/clock/clock_source.h"

namespace simulator {
namespace {

constexpr int64_t Microsecond = 1000;
constexpr int64_t CalibratePulse = 10000 * Microsecond;
constexpr int64_t CalibrateTime = 100000 * Microsecond;
constexpr int64_t RestartPulse = 1000 * Microsecond;
constexpr int64_t RestartTime = 92971 * Microsecond;
constexpr int64_t TransmitPause = Microsecond;
constexpr int64_t ResyncPause = Microsecond;
constexpr int64_t SettlePeriods = 4100;               // after a restart by a port and the resync that follows
constexpr int64_t SettleTime = 450000 * Microsecond;  // after those

// What the converters depend on: rate code, source and speed.
uint16_t ClockSetting(const CardState& card) {
    const unsigned select = card.CardFile[card_register::ClockSelect] & (RateCodeMask | SourceMask);
    const unsigned speed = card.CardFile[card_register::ClockControl] & DoubleSpeedBit;
    return static_cast<uint16_t>(select | speed << 8);
}

bool InStep(const CardState& card, int64_t now) {
    const ConverterPulses& pulses = card.Pulses;
    return pulses.InStep && pulses.InStepWith == ClockSetting(card) && now >= pulses.Settled;
}

// A restart pulse goes out to the converters of every card, over the bracket that carries the link.
template <typename SettledTime>
void RestartConverters(MachineState& machine, SettledTime settled) {
    for (unsigned card = 0; card < machine.CardCount; ++card) {
        machine.Cards[card].Pulses.Restarted = true;
        machine.Cards[card].Pulses.RestartSettled = settled(machine.Cards[card]);
    }
}

}  // namespace

bool AnalogInputWorks(const CardState& card, int64_t now) {
    return card.Pulses.AnalogInputReady != 0 && now >= card.Pulses.AnalogInputReady && InStep(card, now);
}

bool AnalogOutputWorks(const CardState& card, int64_t now) {
    return InStep(card, now) && (card.CardFile[card_register::ClockControl] & ClockModeMask) == NormalMode;
}

bool DigitalOutputWorks(const CardState& card, int64_t now) {
    return InStep(card, now) && card.Pulses.Transmits;
}

void ResetConverters(CardState& card) {
    card.Pulses = ConverterPulses{};
}

// The input is calibrated by one bit and, once that is over, restarted by the other.
void AnalogInputControlWritten(const RegisterChange& change) {
    ConverterPulses& pulses = change.State().Pulses;
    if (change.Rose(CalibrateBit)) {
        pulses.CalibrateRose = change.Now;
    }
    if (change.Fell(CalibrateBit)) {
        const bool longEnough = change.Now - pulses.CalibrateRose >= CalibratePulse;
        pulses.Calibrated = longEnough ? change.Now + CalibrateTime : 0;
    }
    if (change.Rose(RestartBit)) {
        pulses.RestartRose = change.Now;
    }
    if (change.Fell(RestartBit) && change.Now - pulses.RestartRose >= RestartPulse) {
        const bool calibrated = pulses.Calibrated != 0 && change.Now - pulses.Calibrated >= RestartPulse;
        pulses.AnalogInputReady = calibrated ? change.Now + RestartTime : 0;
        RestartConverters(change.Machine, [](const CardState&) { return int64_t{0}; });
    }
}

void PortControlWritten(const RegisterChange& change) {
    ConverterPulses& pulses = change.State().Pulses;
    if (change.Rose(PortRestart)) {
        pulses.RestartRose = change.Now;
    }
    if (change.Fell(PortRestart) && change.Now - pulses.RestartRose >= RestartPulse) {
        RestartConverters(change.Machine, [now = change.Now](const CardState& card) {
            return now + SettlePeriods * Second / NominalRate(card) + SettleTime;
        });
    }
}

void FollowTransmitPulse(const RegisterChange& change) {
    ConverterPulses& pulses = change.State().Pulses;
    if (change.Fell(TransmitBit)) {
        pulses.TransmitFell = change.Now;
        pulses.Transmits = false;
    }
    if (change.Rose(TransmitBit)) {
        pulses.Transmits = pulses.TransmitFell != 0 && change.Now - pulses.TransmitFell >= TransmitPause;
    }
}

// Only converters that have been restarted take up the clock.
void FollowResyncPulse(const RegisterChange& change) {
    CardState& card = change.State();
    if (change.Fell(ResyncBit)) {
        card.Pulses.ResyncFell = change.Now;
    }
    if (!change.Rose(ResyncBit) || change.Now - card.Pulses.ResyncFell < ResyncPause || !card.ClockValid) {
        return;
    }
    if (card.Held()) {
        card.Lag = 0;
    }
    if (card.Pulses.Restarted) {
        card.Pulses.Restarted = false;
        card.Pulses.InStep = true;
        card.Pulses.InStepWith = ClockSetting(card);
        card.Pulses.Settled = card.Pulses.RestartSettled;
    }
}

}  // namespace simulator
