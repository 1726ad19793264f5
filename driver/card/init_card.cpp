#include "card/init_card.h"

#include "card/channel_status.h"
#include "card/locks.h"
#include "card/registers.h"

namespace kestvox {

namespace {

constexpr CardRate InitialRate = *FindCardRate(44100);

// Mixer inputs: first those of the analog output's mixer, then those of the digital output's.
constexpr DWORD InputsOfMixer = MixerInputs / 2;
constexpr DWORD AnalogOutputMixer = 0;
constexpr DWORD DigitalOutputMixer = InputsOfMixer;

// Of the converters, in microseconds
struct Pulse {
    DWORD Bit;
    DWORD Length;
    DWORD Settle;
};
constexpr Pulse Calibration = {ConverterCalibrate, 10000, 100000};
constexpr Pulse Restart = {ConverterRestart, 1000, 92971};

constexpr DWORD TransmitterPause = 1;  // microseconds
constexpr DWORD ResyncPulse = 1;

void SelectInitialClock(CardHandle* handle, CardRecord& card) {
    card.ActiveClockSource = InternalClock;
    WriteCard(handle, card_register::ClockSelect, InternalClock | InitialRate.Code,
              ClockSourceMask | DriveLink | RateCodeMask);
}

void Unmute(CardHandle* handle, DWORD connectorControl) {
    WriteCard(handle, connectorControl, 0, ConnectorMute);
}

void SilenceMixer(CardHandle* handle, DWORD mixer) {
    for (DWORD index = mixer; index < mixer + InputsOfMixer; ++index) {
        SetMixerGain(handle, index, 0);
    }
}

void PulseConverters(CardHandle* handle, const Pulse& pulse) {
    WriteCard(handle, card_register::AnalogInputControl, pulse.Bit, pulse.Bit);
    DelayMicroseconds(handle, pulse.Length);
    WriteCard(handle, card_register::AnalogInputControl, 0, pulse.Bit);
    DelayMicroseconds(handle, pulse.Settle);
}

void ReleaseClock(CardHandle* handle) {
    WriteCard(handle, card_register::ClockControl, 0, Resync);
    DelayMicroseconds(handle, ResyncPulse);
    WriteCard(handle, card_register::ClockControl, 0, DoubleSpeed);
    WriteCard(handle, card_register::ClockControl, Resync, Resync);
    WriteCard(handle, card_register::ClockControl, 0, ClockHold);
    WriteCard(handle, card_register::ClockControl, NormalClockMode, ClockModeMask);
}

void RestartTransmitter(CardHandle* handle) {
    WriteCard(handle, card_register::DigitalTransmitter, 0, TransmitterRun);
    DelayMicroseconds(handle, TransmitterPause);
    WriteCard(handle, card_register::DigitalTransmitter, TransmitterRun, TransmitterRun);
}

void ClearIndirectRegisters(CardHandle* handle) {
    for (DWORD index = 0; index < IndirectRegisters; ++index) {
        WriteIndirectRegister(handle, index, 0, WholeRegister);
    }
}

}  // namespace

void InitCard(CardHandle* handle, CardRecord& card) {
    MutexLock clock(ClockMutex);
    SelectInitialClock(handle, card);
    Unmute(handle, card_register::AnalogInputControl);
    Unmute(handle, card_register::DigitalInputControl);
    Unmute(handle, card_register::AnalogOutputControl);
    SilenceMixer(handle, AnalogOutputMixer);
    Unmute(handle, card_register::DigitalOutputControl);
    SilenceMixer(handle, DigitalOutputMixer);
    PulseConverters(handle, Calibration);
    PulseConverters(handle, Restart);
    WriteCard(handle, card_register::DigitalReceiver, ReceiverOff, ReceiverOff);
    ReleaseClock(handle);
    RestartTransmitter(handle);
    ClearIndirectRegisters(handle);
    SetChannelStatusRate(handle, card, InitialRate);
    SetDigitalOutputStatus(handle, card, FALSE);
}

}  // namespace kestvox
