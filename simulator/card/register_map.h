// The numbers of the card's registers and, of their bits, those that the hardware behind them looks at. What
// the registers are called, which bits can be written and what a write sets off is in register_table.cpp.
#pragma once

#include <cstdint>

namespace simulator {

namespace card_register {
inline constexpr uint8_t AnalogInputControl = 0;
inline constexpr uint8_t MixerGain = 2;
inline constexpr uint8_t MixerIndex = 3;
inline constexpr uint8_t DigitalInputControl = 8;
inline constexpr uint8_t DigitalReceiver = 9;
inline constexpr uint8_t MeasuredRate = 10;
inline constexpr uint8_t AnalogOutputControl = 16;
inline constexpr uint8_t ClockControl = 17;
inline constexpr uint8_t DigitalOutputControl = 24;
inline constexpr uint8_t DigitalTransmitter = 25;
inline constexpr uint8_t ChannelStatusData = 26;
inline constexpr uint8_t ChannelStatusIndex = 27;
inline constexpr uint8_t ClockSelect = 32;
inline constexpr uint8_t StartHold = 36;
}  // namespace card_register

namespace port_register {
inline constexpr uint8_t Control = 0;
inline constexpr uint8_t Receiver = 1;      // digital input
inline constexpr uint8_t MeasuredRate = 2;  // digital input
}  // namespace port_register

// AnalogInputControl
inline constexpr uint8_t RestartBit = 0x04;    // a pulse restarts the converters
inline constexpr uint8_t CalibrateBit = 0x10;  // a pulse calibrates the input

// AnalogInputControl, DigitalInputControl, AnalogOutputControl, DigitalOutputControl: either bit mutes.
inline constexpr uint8_t MuteBits = 0x03;

// DigitalReceiver. The card's receiver works when both of its bits are clear, the port's when its own is.
// A measurement of the rate starts when the measure bit falls.
inline constexpr uint8_t ReceiverOff = 0x01;  // port_register::Receiver, too
inline constexpr uint8_t ReceiverClockOff = 0x02;
inline constexpr uint8_t MeasureBit = 0x80;  // port_register::Receiver, too

// ClockControl
inline constexpr uint8_t ClockHeld = 0x01;  // no frames move
inline constexpr uint8_t ClockModeMask = 0x06;
inline constexpr uint8_t NormalMode = 0x02;  // the only one in which the analog output sounds
inline constexpr uint8_t DoubleSpeedBit = 0x08;
inline constexpr uint8_t ResyncBit = 0x80;  // a pulse is low; no frames move meanwhile

// DigitalTransmitter
inline constexpr uint8_t TransmitBit = 0x01;  // a pulse is low: the transmitter starts when it ends
inline constexpr uint8_t ProfessionalBit = 0x02;

// ClockSelect
inline constexpr uint8_t RateCodeMask = 0x07;
inline constexpr uint8_t DriveLinkBit = 0x10;
inline constexpr uint8_t SourceMask = 0x60;  // 0: the card's own oscillator
inline constexpr unsigned SourceShift = 5;
inline constexpr uint8_t SourceLink = 0x20;
inline constexpr uint8_t SourceDigital = 0x40;
inline constexpr uint8_t SourcePll = 0x60;

// StartHold: channels of that direction which are armed with StartWithHold wait until the bit is cleared.
inline constexpr uint8_t HoldOutputs = 0x01;
inline constexpr uint8_t HoldInputs = 0x02;

// port_register::Control
inline constexpr uint8_t StartWithHold = 0x02;
inline constexpr uint8_t PortRestart = 0x04;  // like RestartBit, for the converters of every card
inline constexpr uint8_t PortMono = 0x20;
inline constexpr uint8_t SampleFormatMask = 0xC0;
inline constexpr unsigned SampleFormatShift = 6;

}  // namespace simulator
