#include <algorithm>
#include <iterator>
#include <tuple>

#include "simulator/card/register_file.h"
#include "simulator/card/register_map.h"
#include "simulator/clock/clock_control.h"
#include "simulator/clock/converters.h"
#include "simulator/clock/rate_measurement.h"

namespace simulator {
namespace {

using enum RegisterFile;
using namespace card_register;

constexpr uint8_t AllPorts = 0x0F;
constexpr uint8_t DigitalIn = 0x02;
constexpr bool Cleared = true;
constexpr bool Kept = false;

constexpr RegisterBehaviour Plain{};
constexpr RegisterBehaviour Window(RegisterFile file, uint8_t indexRegister) {
    return {file, indexRegister, nullptr, nullptr};
}
constexpr RegisterBehaviour OnRead(uint8_t (*read)(CardState&, int64_t)) {
    return {Card, 0, read, nullptr};
}
constexpr RegisterBehaviour OnWrite(void (*written)(const RegisterChange&)) {
    return {Card, 0, nullptr, written};
}

// Power-up values are what a card that nobody has initialised shows: connectors muted, clock held,
// gains and channel status full of old values.
// clang-format off
constexpr RegisterDefinition Table[] = {
    // file, channels, index, name, power-up, writable, soft reset,
    // behaviour, fields, meaning
    {Card, 1, AnalogInputControl,   "analog input control",    0x03, 0x17, Kept,
     OnWrite(AnalogInputControlWritten),
     {{{"mute", MuteBits}, {"restart", RestartBit}, {"calibrate", CalibrateBit}}},
     "restart and calibrate are pulsed high, and the converters settle after them"},
    {Card, 1, MixerGain,            "mixer gain",              0x00, 0xFF, Kept,
     Window(Mixer, MixerIndex), {},
     "of the mixer input in mixer index: 00 is silence, 80 is 0 dB"},
    {Card, 1, MixerIndex,           "mixer index",             0x00, 0x07, Kept,
     Plain, {{{"source", 0x03}, {"destination", 0x04}}},
     "number of the mixer input that mixer gain is of"},
    {Card, 1, DigitalInputControl,  "digital input control",   0x03, 0x03, Kept,
     Plain, {{{"mute", MuteBits}}}},
    {Card, 1, DigitalReceiver,      "digital receiver",        0x02, 0x83, Kept,
     OnWrite(DigitalReceiverWritten),
     {{{"off", ReceiverOff}, {"clock off", ReceiverClockOff}, {"measure", MeasureBit}}},
     "as the source of the clock; the end of a measure pulse begins a measurement of the rate"},
    {Card, 1, MeasuredRate,         "measured rate",           0x07, 0x00, Kept,
     OnRead(MeasuredByCard), {{{"invalid", 0x07}, {"rate class", 0x38}}},
     "result of the card's measurement"},
    {Card, 1, AnalogOutputControl,  "analog output control",   0x03, 0x03, Kept,
     Plain, {{{"mute", MuteBits}}}},
    {Card, 1, ClockControl,         "clock control",           0x8D, 0x8F, Kept,
     OnWrite(ClockControlWritten),
     {{{"hold", ClockHeld}, {"mode", ClockModeMask}, {"double speed", DoubleSpeedBit}, {"resync", ResyncBit}}},
     "hold: the clock stands still; mode: 1 is the only one that sounds; resync is pulsed low"},
    {Card, 1, DigitalOutputControl, "digital output control",  0x03, 0x03, Kept,
     Plain, {{{"mute", MuteBits}}}},
    {Card, 1, DigitalTransmitter,   "digital transmitter",     0x01, 0x03, Kept,
     OnWrite(DigitalTransmitterWritten), {{{"run", TransmitBit}, {"professional", ProfessionalBit}}},
     "run is pulsed low, and the transmitter starts; professional: the format of the channel status"},
    {Card, 1, ChannelStatusData,    "channel status data",     0x00, 0xFF, Kept,
     Window(Indirect, ChannelStatusIndex), {},
     "of the indirect register in channel status index"},
    {Card, 1, ChannelStatusIndex,   "channel status index",    0x00, 0x0F, Kept,
     Plain, {}},
    {Card, 1, ClockSelect,          "clock select",            0x02, 0x77, Kept,
     OnWrite(ClockSelectWritten),
     {{{"rate code", RateCodeMask}, {"drive link", DriveLinkBit}, {"source", SourceMask}}},
     "source: 0 the card, 1 the link, 2 the digital input, 3 the PLL; drive link: the clock goes out on it"},
    {Card, 1, StartHold,            "start hold",              0x00, 0x03, Cleared,
     OnWrite(StartHoldWritten), {{{"outputs", HoldOutputs}, {"inputs", HoldInputs}}},
     "armed channels of that direction wait until it is cleared"},
    {Port, AllPorts,  port_register::Control,      "port control",            0x00, 0xE6, Cleared,
     OnWrite(PortControlWritten),
     {{{"start with hold", StartWithHold}, {"restart", PortRestart}, {"mono", PortMono}, {"sample format", SampleFormatMask}}},
     "start with hold: the channel waits behind it; restart is pulsed high"},
    {Port, DigitalIn, port_register::Receiver,     "port receiver",           0x01, 0x81, Cleared,
     OnWrite(PortReceiverWritten), {{{"off", ReceiverOff}, {"measure", MeasureBit}}},
     "of the digital input, as what is recorded; measure as in digital receiver"},
    {Port, DigitalIn, port_register::MeasuredRate, "port measured rate",      0x07, 0x00, Kept,
     OnRead(MeasuredByPort), {{{"invalid", 0x07}, {"rate class", 0x38}}},
     "result of the port's measurement"},
    {Indirect, 1, 0,  "channel status byte 0",          0xFF, 0xFF, Kept, Plain, {}},
    {Indirect, 1, 1,  "channel status byte 1",          0xFF, 0xFF, Kept, Plain, {}},
    {Indirect, 1, 2,  "channel status byte 2",          0xFF, 0xFF, Kept, Plain, {}},
    {Indirect, 1, 3,  "channel status byte 3",          0xFF, 0xFF, Kept, Plain, {}},
    {Indirect, 1, 4,  "channel status byte 4",          0xFF, 0xFF, Kept, Plain, {}},
    {Indirect, 1, 5,  "user data 0",                    0xFF, 0xFF, Kept, Plain, {}},
    {Indirect, 1, 6,  "user data 1",                    0xFF, 0xFF, Kept, Plain, {}},
    {Indirect, 1, 7,  "user data 2",                    0xFF, 0xFF, Kept, Plain, {}},
    {Indirect, 1, 8,  "user data 3",                    0xFF, 0xFF, Kept, Plain, {}},
    {Indirect, 1, 9,  "user data 4",                    0xFF, 0xFF, Kept, Plain, {}},
    {Indirect, 1, 10, "user data 5",                    0xFF, 0xFF, Kept, Plain, {}},
    {Indirect, 1, 11, "user data 6",                    0xFF, 0xFF, Kept, Plain, {}},
    {Indirect, 1, 12, "user data 7",                    0xFF, 0xFF, Kept, Plain, {}},
    {Indirect, 1, 13, "user data 8",                    0xFF, 0xFF, Kept, Plain, {}},
    {Indirect, 1, 14, "user data 9",                    0xFF, 0xFF, Kept, Plain, {}},
    {Indirect, 1, 15, "user data 10",                   0xFF, 0xFF, Kept, Plain, {}},
    {Mixer, 1, 0,  "analog in to analog out",        0x80, 0xFF, Kept, Plain, {}},
    {Mixer, 1, 1,  "digital in to analog out",       0x80, 0xFF, Kept, Plain, {}},
    {Mixer, 1, 2,  "analog playback to analog out",  0x80, 0xFF, Kept, Plain, {}},
    {Mixer, 1, 3,  "digital playback to analog out", 0x80, 0xFF, Kept, Plain, {}},
    {Mixer, 1, 4,  "analog in to digital out",       0x80, 0xFF, Kept, Plain, {}},
    {Mixer, 1, 5,  "digital in to digital out",      0x80, 0xFF, Kept, Plain, {}},
    {Mixer, 1, 6,  "analog playback to digital out", 0x80, 0xFF, Kept, Plain, {}},
    {Mixer, 1, 7,  "digital playback to digital out", 0x80, 0xFF, Kept, Plain, {}},
};
// clang-format on

// --- what a row must be, checked when it is compiled ------------------------------------------------------

constexpr size_t RegisterCount(RegisterFile file) {
    switch (file) {
    case Card:
        return std::tuple_size_v<decltype(CardState::CardFile)>;
    case Port:
        return std::tuple_size_v<decltype(CardState::PortFiles)::value_type>;
    case Indirect:
        return std::tuple_size_v<decltype(CardState::IndirectFile)>;
    case Mixer:
        return std::tuple_size_v<decltype(CardState::MixerFile)>;
    }
    return 0;
}

constexpr bool HasAPlace(const RegisterDefinition& row) {
    return row.Index < RegisterCount(row.File) && row.Channels != 0 && row.Channels >> ChannelCount == 0;
}
static_assert(std::all_of(std::begin(Table), std::end(Table), HasAPlace),
              "a register lies beyond the array of its file in CardState, or no channel has it");

constexpr bool IsOnlyOne(const RegisterDefinition& row) {
    return std::none_of(std::begin(Table), std::end(Table), [&row](const RegisterDefinition& other) {
        return &other != &row && other.File == row.File && other.Index == row.Index &&
               (other.Channels & row.Channels) != 0;
    });
}
static_assert(std::all_of(std::begin(Table), std::end(Table), IsOnlyOne), "two registers have one number");

// Whatever has been written to its index register, a data register leads to a place of its file.
constexpr bool StaysInItsWindow(const RegisterDefinition& row) {
    if (!row.IsWindow()) {
        return true;
    }
    const auto index =
        std::find_if(std::begin(Table), std::end(Table), [&row](const RegisterDefinition& other) {
            return other.File == Card && other.Index == row.Does.IndexRegister;
        });
    return index != std::end(Table) && (index->Reset | index->Writable) < RegisterCount(row.Does.WindowFile);
}
static_assert(std::all_of(std::begin(Table), std::end(Table), StaysInItsWindow),
              "an index register is missing, or counts further than the file that it leads to");

}  // namespace

std::span<const RegisterDefinition> RegisterTable() {
    return Table;
}

}  // namespace simulator
