// The card's registers as far as the driver uses them, and the routines that take several accesses.
//
// No lock is taken: sequences of an index and a data access rely on running from one place at a time
// for a card. Every routine stops at its first failing access and answers FALSE.
#pragma once

#include "card/requests.h"

namespace kestvox {

// Card registers (CardSpace)
namespace card_register {
inline constexpr DWORD Reset = 0;
inline constexpr DWORD MixerGain = 2;   // of the input selected in MixerIndex, 128 = 0 dB
inline constexpr DWORD MixerIndex = 3;  // bits 0-2
inline constexpr DWORD Setup8 = 8;      // bits 0-1 of these three and of Reset: cleared at initialisation
inline constexpr DWORD Receiver = 9;    // digital receiver control and rate measurement
inline constexpr DWORD ReceiverRate = 10;
inline constexpr DWORD Setup16 = 16;
inline constexpr DWORD ClockControl = 17;
inline constexpr DWORD Setup24 = 24;
inline constexpr DWORD DigitalOutput = 25;
inline constexpr DWORD IndirectData = 26;
inline constexpr DWORD IndirectIndex = 27;
inline constexpr DWORD Clock = 32;
inline constexpr DWORD StartHold = 36;
}  // namespace card_register

// Card register 9
inline constexpr DWORD ReceiverBit0 = 0x01;
inline constexpr DWORD ReceiverBit1 = 0x02;
inline constexpr DWORD MeasureRate = 0x80;
// Card register 10
inline constexpr DWORD NoMeasurement = 0x07;  // all of these set: there is no valid measurement
inline constexpr DWORD RateClassMask = 0x38;
inline constexpr DWORD RateClassShift = 3;
// Card register 17
inline constexpr DWORD ClockHold = 0x01;
inline constexpr DWORD DoubleSpeed = 0x08;
inline constexpr DWORD Resync = 0x80;  // active low
// Card register 32
inline constexpr DWORD RateMask = 0x07;
inline constexpr DWORD DriveLink = 0x10;
inline constexpr DWORD SourceMask = 0x60;
// Card register 36
inline constexpr DWORD OutputHold = 0x01;
inline constexpr DWORD InputHold = 0x02;

// Port registers (PortSpace, through the stream's own handle)
namespace port_register {
inline constexpr DWORD Control = 0;
inline constexpr DWORD Receiver = 1;      // digital input port
inline constexpr DWORD MeasuredRate = 2;  // digital input port
}  // namespace port_register
inline constexpr DWORD PortArm = 0x02;
inline constexpr DWORD PortResync = 0x04;
inline constexpr DWORD PortMono = 0x20;
inline constexpr DWORD PortFormatMask = 0xC0;
inline constexpr DWORD PortFormatShift = 6;
// Port register 1; MeasureRate as in card register 9
inline constexpr DWORD PortReceiverOff = 0x01;

BOOL WriteCard(CardHandle* handle, DWORD reg, DWORD value, DWORD mask);
BOOL WritePort(CardHandle* handle, DWORD reg, DWORD value, DWORD mask);

// Writes unless the register, read first, holds `value` under `mask` already; tells whether it wrote
// (its outcome is not looked at). A register that cannot be read is written.
BOOL WriteCardRegisterIfChanged(CardHandle* handle, DWORD reg, RegisterSpace space, DWORD value, DWORD mask);

// One of the 16 registers behind IndirectIndex and IndirectData.
BOOL WriteIndirectRegister(CardHandle* handle, DWORD index, DWORD value, DWORD mask);

// Gain of monitor mixer input 0..7, value 0..255.
BOOL SetMixerGain(CardHandle* handle, DWORD index, DWORD value);

// Sets or clears OutputHold, InputHold or both on the card, through a borrowed handle.
BOOL SetStartHold(CardRecord& card, DWORD bits);
BOOL ReleaseStartHold(CardRecord& card, DWORD bits);

}  // namespace kestvox
