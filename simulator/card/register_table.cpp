#include "simulator/card/register_file.h"
#include "simulator/clock/clock_control.h"

namespace simulator {
namespace {

using enum RegisterFile;

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
    // file, channels, index, name, power-up, writable, soft reset, behaviour,
    // fields
    {Card, 1, 0,  "analog input control",    0x03, 0x17, Kept,    Plain,
     {{{"mute", 0x03}, {"restart", 0x04}, {"calibrate", 0x10}}}},
    {Card, 1, 2,  "mixer gain",              0x00, 0xFF, Kept,    Window(Mixer, 3),
     {}},
    {Card, 1, 3,  "mixer index",             0x00, 0x07, Kept,    Plain,
     {{{"source", 0x03}, {"destination", 0x04}}}},
    {Card, 1, 8,  "digital input control",   0x03, 0x03, Kept,    Plain,
     {{{"mute", 0x03}}}},
    {Card, 1, 9,  "digital receiver",        0x02, 0x83, Kept,    OnWrite(ReceiverControlWritten),
     {{{"off", 0x01}, {"clock off", 0x02}, {"measure", 0x80}}}},
    {Card, 1, 10, "measured rate",           0x07, 0x00, Kept,    OnRead(MeasuredByCard),
     {{{"invalid", 0x07}, {"rate class", 0x38}}}},
    {Card, 1, 16, "analog output control",   0x03, 0x03, Kept,    Plain,
     {{{"mute", 0x03}}}},
    {Card, 1, 17, "clock control",           0x0D, 0x8F, Kept,    OnWrite(ClockControlWritten),
     {{{"hold", 0x01}, {"mode", 0x06}, {"double speed", 0x08}, {"resync", 0x80}}}},
    {Card, 1, 24, "digital output control",  0x03, 0x03, Kept,    Plain,
     {{{"mute", 0x03}}}},
    {Card, 1, 25, "digital transmitter",     0x00, 0x03, Kept,    OnWrite(TransmitterWritten),
     {{{"run", 0x01}, {"professional", 0x02}}}},
    {Card, 1, 26, "channel status data",     0x00, 0xFF, Kept,    Window(Indirect, 27),
     {}},
    {Card, 1, 27, "channel status index",    0x00, 0x0F, Kept,    Plain,
     {}},
    {Card, 1, 32, "clock select",            0x02, 0x77, Kept,    OnWrite(ClockSelectWritten),
     {{{"rate code", 0x07}, {"drive link", 0x10}, {"source", 0x60}}}},
    {Card, 1, 36, "start hold",              0x00, 0x03, Cleared, OnWrite(StartHoldWritten),
     {{{"outputs", 0x01}, {"inputs", 0x02}}}},
    {Port, AllPorts,  0,  "port control",            0x00, 0xE6, Cleared, Plain,
     {{{"start with hold", 0x02}, {"resync", 0x04}, {"mono", 0x20}, {"sample format", 0xC0}}}},
    {Port, DigitalIn, 1,  "port receiver",           0x01, 0x81, Cleared, OnWrite(PortReceiverWritten),
     {{{"off", 0x01}, {"measure", 0x80}}}},
    {Port, DigitalIn, 2,  "port measured rate",      0x07, 0x00, Kept,    OnRead(MeasuredByPort),
     {{{"invalid", 0x07}, {"rate class", 0x38}}}},
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

}  // namespace

std::span<const RegisterDefinition> RegisterTable() {
    return Table;
}

}  // namespace simulator
