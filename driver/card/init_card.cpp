#include "card/init_card.h"

#include "card/channel_status.h"
#include "card/delay.h"
#include "card/registers.h"

namespace kestvox {

namespace {

constexpr CardRate InitialRate = *FindCardRate(44100);

void SilenceMixer(CardHandle* handle, DWORD first) {
    for (DWORD index = first; index < first + MixerInputs / 2; ++index) {
        SetMixerGain(handle, index, 0);
    }
}

// Sets a bit of card register 0 for a time, then lets the card settle.
void PulseReset(CardHandle* handle, DWORD bit, DWORD pulse, DWORD settle) {
    WriteCard(handle, card_register::Reset, bit, bit);
    DelayMicroseconds(handle, pulse);
    WriteCard(handle, card_register::Reset, 0, bit);
    DelayMicroseconds(handle, settle);
}

void ResetClockControl(CardHandle* handle) {
    WriteCard(handle, card_register::ClockControl, 0, Resync);
    DelayMicroseconds(handle, 1);
    WriteCard(handle, card_register::ClockControl, 0, DoubleSpeed);
    WriteCard(handle, card_register::ClockControl, Resync, Resync);
    WriteCard(handle, card_register::ClockControl, 0, ClockHold);
    WriteCard(handle, card_register::ClockControl, 0x02, 0x06);
}

void ResetDigitalOutput(CardHandle* handle, const CardRecord& card) {
    WriteCard(handle, card_register::DigitalOutput, 0, 0x01);
    DelayMicroseconds(handle, 1);
    WriteCard(handle, card_register::DigitalOutput, 0x01, 0x01);
    for (DWORD index = 0; index < 16; ++index) {
        WriteIndirectRegister(handle, index, 0, 0xFF);
    }
    SetChannelStatusRate(handle, card, InitialRate);
    SetDigitalOutputStatus(handle, card, FALSE);
}

}  // namespace

void InitCard(CardHandle* handle, CardRecord& card) {
    card.ActiveClockSource = InternalClock;
    WriteCard(handle, card_register::Clock, InitialRate.Code, SourceMask | DriveLink | RateMask);
    WriteCard(handle, card_register::Reset, 0, 0x03);
    WriteCard(handle, card_register::Setup8, 0, 0x03);
    WriteCard(handle, card_register::Setup16, 0, 0x03);
    SilenceMixer(handle, 0);
    WriteCard(handle, card_register::Setup24, 0, 0x03);
    SilenceMixer(handle, MixerInputs / 2);
    PulseReset(handle, 0x10, 10000, 100000);
    PulseReset(handle, 0x04, 1000, 92971);
    WriteCard(handle, card_register::Receiver, ReceiverBit0, ReceiverBit0);
    ResetClockControl(handle);
    ResetDigitalOutput(handle, card);
}

}  // namespace kestvox
