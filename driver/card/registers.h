// The card's registers as far as the driver uses them, the routines that take several accesses, and the waits
// between them.
//
// An index and the access to what is behind it are kept together by SequenceMutex; no other lock is taken.
// Unless it says otherwise, a routine stops at its first failing access and answers FALSE.
#pragma once

#include "card/rates.h"
#include "card/requests.h"

namespace kestvox {

inline constexpr DWORD WholeRegister = 0xFF;  // the mask of a write that replaces every bit

// Registers of the card (CardSpace). The two converters and the two sides of the digital connector each have
// a control register, with the connector's mute in bits 0 and 1.
namespace card_register {
inline constexpr DWORD AnalogInputControl = 0;
inline constexpr DWORD MixerGain = 2;   // of the mixer input in MixerIndex: 0 silence, 128 = 0 dB
inline constexpr DWORD MixerIndex = 3;  // which of the eight mixer inputs MixerGain stands for
inline constexpr DWORD DigitalInputControl = 8;
inline constexpr DWORD DigitalReceiver = 9;  // the receiver, as the source of the card's clock
inline constexpr DWORD MeasuredRate = 10;    // of the digital signal that comes in
inline constexpr DWORD AnalogOutputControl = 16;
inline constexpr DWORD ClockControl = 17;
inline constexpr DWORD DigitalOutputControl = 24;
inline constexpr DWORD DigitalTransmitter = 25;
inline constexpr DWORD ChannelStatusData = 26;  // of the indirect register in ChannelStatusIndex
inline constexpr DWORD ChannelStatusIndex = 27;
inline constexpr DWORD ClockSelect = 32;  // the clock's rate and source, and the link
inline constexpr DWORD StartHold = 36;
}  // namespace card_register

// MixerIndex
inline constexpr DWORD MixerIndexMask = 0x07;  // bit 2: the mixer, bits 0-1: its input

// ChannelStatusIndex: indirect registers 0 to 4 hold the bytes of the channel status, the others user data.
inline constexpr DWORD IndirectIndexMask = 0x0F;
inline constexpr DWORD IndirectRegisters = 16;

// AnalogInputControl, DigitalInputControl, AnalogOutputControl, DigitalOutputControl
inline constexpr DWORD ConnectorMute = 0x03;
// AnalogInputControl only: each is pulsed high, and the converters have to settle after it.
inline constexpr DWORD ConverterRestart = 0x04;
inline constexpr DWORD ConverterCalibrate = 0x10;

// DigitalReceiver: the receiver supplies a clock while neither of the first two is set.
inline constexpr DWORD ReceiverOff = 0x01;
inline constexpr DWORD ReceiverClockOff = 0x02;
inline constexpr DWORD MeasureRate = 0x80;  // the end of a pulse of one sample period starts a measurement

// MeasuredRate
inline constexpr DWORD NoMeasurement = 0x07;  // all of these set: there is no valid measurement
inline constexpr DWORD RateClassMask = 0x38;  // MeasuredClass of the rate table
inline constexpr DWORD RateClassShift = 3;

// ClockControl
inline constexpr DWORD ClockHold = 0x01;  // the clock stands still while it is programmed
inline constexpr DWORD ClockModeMask = 0x06;
inline constexpr DWORD NormalClockMode = 0x02;  // the only one that the driver uses
inline constexpr DWORD DoubleSpeed = 0x08;      // for the rates that the rate table says
inline constexpr DWORD Resync = 0x80;           // pulsed low: the card falls in step with its clock

// DigitalTransmitter
inline constexpr DWORD TransmitterRun = 0x01;
inline constexpr DWORD ProfessionalFormat = 0x02;  // of the channel status; clear: consumer format

// ClockSelect
inline constexpr DWORD RateCodeMask = 0x07;     // Code of the rate table
inline constexpr DWORD DriveLink = 0x10;        // the card's clock goes out on the card-to-card link
inline constexpr DWORD ClockSourceMask = 0x60;  // those bits of a ClockSourceCode

// StartHold: a channel that is armed waits while the bit of its direction is set.
inline constexpr DWORD OutputHold = 0x01;
inline constexpr DWORD InputHold = 0x02;

// Registers of a port (PortSpace), through the stream's own handle
namespace port_register {
inline constexpr DWORD Control = 0;
inline constexpr DWORD Receiver = 1;      // digital input port: the receiver, as what is recorded
inline constexpr DWORD MeasuredRate = 2;  // digital input port: bits as in the card's MeasuredRate
}  // namespace port_register

// Control
inline constexpr DWORD PortArm = 0x02;     // the port starts with the card's StartHold
inline constexpr DWORD PortResync = 0x04;  // pulsed high: the port falls in step with the card's clock
inline constexpr DWORD PortMono = 0x20;
inline constexpr DWORD PortFormatMask = 0xC0;  // SampleFormatCode
inline constexpr DWORD PortFormatShift = 6;
// Receiver; MeasureRate is the same bit as in the card's DigitalReceiver.
inline constexpr DWORD PortReceiverOff = 0x01;

BOOL WriteCard(CardHandle* handle, DWORD reg, DWORD value, DWORD mask);
BOOL WritePort(CardHandle* handle, DWORD reg, DWORD value, DWORD mask);

// Writes unless the register, read first, holds `value` under `mask` already; tells whether it wrote
// (its outcome is not looked at). A register that cannot be read is written.
BOOL WriteCardRegisterIfChanged(CardHandle* handle, DWORD reg, RegisterSpace space, DWORD value, DWORD mask);

// One of the 16 registers behind ChannelStatusIndex and ChannelStatusData.
BOOL WriteIndirectRegister(CardHandle* handle, DWORD index, DWORD value, DWORD mask);

// Gain of monitor mixer input 0..7, value 0..255.
BOOL SetMixerGain(CardHandle* handle, DWORD index, DWORD value);

// That many sample periods at `rate` Hz in microseconds, at least one. `periods` up to 4294.
constexpr DWORD PeriodsToMicroseconds(DWORD periods, DWORD rate) {
    return periods * 1000000u / rate + 1;
}

// A wait that the hardware needs. Below 1000 the kernel waits; from 1000 on the calling thread spins on the
// millisecond timer for the rounded-up number of milliseconds and then to the next tick.
void DelayMicroseconds(CardHandle* handle, DWORD microseconds);

// The registers in which a receiver is told to measure its signal (MeasureRate) and tells the result.
struct RateMeter {
    RegisterSpace Space;
    DWORD Control;
    DWORD Reading;
};

// Whether the signal has the rate, by the second of two measurements: the first one began before the receiver
// had settled. True also when the measurement cannot be read, and for a signal at a rate that is
// NotMeasurable.
bool MeasuredRateMatches(CardHandle* handle, const RateMeter& meter, const CardRate& rate);

// Sets or clears OutputHold, InputHold or both on the card, through a borrowed handle.
BOOL SetStartHold(CardRecord& card, DWORD bits);
BOOL ReleaseStartHold(CardRecord& card, DWORD bits);

}  // namespace kestvox
