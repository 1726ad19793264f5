#include "simulator/register_file.h"

#include <bit>

#include "simulator/clock_control.h"

namespace simulator {
namespace {

constexpr uint8_t AllPorts = 0x0F;
constexpr uint8_t DigitalInputPort = 0x02;

// Power-up values are what a card that nobody has initialised shows: connectors muted, clock held,
// gains and channel status full of old values.
constexpr RegisterDefinition Table[] = {
    {.File = RegisterFile::Card, .Index = 0, .Name = "analog input control", .Reset = 0x03, .Writable = 0x17,
     .Fields = {{{"mute", 0x03}, {"restart", 0x04}, {"calibrate", 0x10}}}},
    {.File = RegisterFile::Card, .Index = 2, .Name = "mixer gain",
     .WindowFile = RegisterFile::Mixer, .WindowIndex = 3},
    {.File = RegisterFile::Card, .Index = 3, .Name = "mixer index", .Writable = 0x07,
     .Fields = {{{"source", 0x03}, {"destination", 0x04}}}},
    {.File = RegisterFile::Card, .Index = 8, .Name = "digital input control", .Reset = 0x03, .Writable = 0x03,
     .Fields = {{{"mute", 0x03}}}},
    {.File = RegisterFile::Card, .Index = 9, .Name = "digital receiver", .Reset = 0x02, .Writable = 0x83,
     .Fields = {{{"off", 0x01}, {"clock off", 0x02}, {"measure", 0x80}}},
     .Written = ReceiverControlWritten},
    {.File = RegisterFile::Card, .Index = 10, .Name = "measured rate", .Reset = 0x07, .Writable = 0,
     .Fields = {{{"invalid", 0x07}, {"rate class", 0x38}}}, .Read = MeasuredByCard},
    {.File = RegisterFile::Card, .Index = 16, .Name = "analog output control", .Reset = 0x03, .Writable = 0x03,
     .Fields = {{{"mute", 0x03}}}},
    {.File = RegisterFile::Card, .Index = 17, .Name = "clock control", .Reset = 0x0D, .Writable = 0x8F,
     .Fields = {{{"hold", 0x01}, {"mode", 0x06}, {"double speed", 0x08}, {"resync", 0x80}}},
     .Written = ClockControlWritten},
    {.File = RegisterFile::Card, .Index = 24, .Name = "digital output control", .Reset = 0x03, .Writable = 0x03,
     .Fields = {{{"mute", 0x03}}}},
    {.File = RegisterFile::Card, .Index = 25, .Name = "digital transmitter", .Writable = 0x03,
     .Fields = {{{"run", 0x01}, {"professional", 0x02}}}},
    {.File = RegisterFile::Card, .Index = 26, .Name = "channel status data",
     .WindowFile = RegisterFile::Indirect, .WindowIndex = 27},
    {.File = RegisterFile::Card, .Index = 27, .Name = "channel status index", .Writable = 0x0F},
    {.File = RegisterFile::Card, .Index = 32, .Name = "clock select", .Reset = 0x02, .Writable = 0x77,
     .Fields = {{{"rate code", 0x07}, {"drive link", 0x10}, {"source", 0x60}}},
     .Written = ClockSelectWritten},
    {.File = RegisterFile::Card, .Index = 36, .Name = "start hold", .Writable = 0x03,
     .Fields = {{{"outputs", 0x01}, {"inputs", 0x02}}}, .ClearedBySoftReset = true,
     .Written = StartHoldWritten},

    {.File = RegisterFile::Port, .Index = 0, .Name = "port control", .Writable = 0xE6,
     .Fields = {{{"start with hold", 0x02}, {"resync", 0x04}, {"mono", 0x20}, {"sample format", 0xC0}}},
     .Channels = AllPorts, .ClearedBySoftReset = true},
    {.File = RegisterFile::Port, .Index = 1, .Name = "port receiver", .Reset = 0x01, .Writable = 0x81,
     .Fields = {{{"off", 0x01}, {"measure", 0x80}}}, .Channels = DigitalInputPort,
     .ClearedBySoftReset = true, .Written = PortReceiverWritten},
    {.File = RegisterFile::Port, .Index = 2, .Name = "port measured rate", .Reset = 0x07, .Writable = 0,
     .Fields = {{{"invalid", 0x07}, {"rate class", 0x38}}}, .Channels = DigitalInputPort,
     .Read = MeasuredByPort},

    {.File = RegisterFile::Indirect, .Index = 0, .Name = "channel status byte 0", .Reset = 0xFF},
    {.File = RegisterFile::Indirect, .Index = 1, .Name = "channel status byte 1", .Reset = 0xFF},
    {.File = RegisterFile::Indirect, .Index = 2, .Name = "channel status byte 2", .Reset = 0xFF},
    {.File = RegisterFile::Indirect, .Index = 3, .Name = "channel status byte 3", .Reset = 0xFF},
    {.File = RegisterFile::Indirect, .Index = 4, .Name = "channel status byte 4", .Reset = 0xFF},
    {.File = RegisterFile::Indirect, .Index = 5, .Name = "user data 0", .Reset = 0xFF},
    {.File = RegisterFile::Indirect, .Index = 6, .Name = "user data 1", .Reset = 0xFF},
    {.File = RegisterFile::Indirect, .Index = 7, .Name = "user data 2", .Reset = 0xFF},
    {.File = RegisterFile::Indirect, .Index = 8, .Name = "user data 3", .Reset = 0xFF},
    {.File = RegisterFile::Indirect, .Index = 9, .Name = "user data 4", .Reset = 0xFF},
    {.File = RegisterFile::Indirect, .Index = 10, .Name = "user data 5", .Reset = 0xFF},
    {.File = RegisterFile::Indirect, .Index = 11, .Name = "user data 6", .Reset = 0xFF},
    {.File = RegisterFile::Indirect, .Index = 12, .Name = "user data 7", .Reset = 0xFF},
    {.File = RegisterFile::Indirect, .Index = 13, .Name = "user data 8", .Reset = 0xFF},
    {.File = RegisterFile::Indirect, .Index = 14, .Name = "user data 9", .Reset = 0xFF},
    {.File = RegisterFile::Indirect, .Index = 15, .Name = "user data 10", .Reset = 0xFF},

    {.File = RegisterFile::Mixer, .Index = 0, .Name = "analog in to analog out", .Reset = 0x80},
    {.File = RegisterFile::Mixer, .Index = 1, .Name = "digital in to analog out", .Reset = 0x80},
    {.File = RegisterFile::Mixer, .Index = 2, .Name = "analog playback to analog out", .Reset = 0x80},
    {.File = RegisterFile::Mixer, .Index = 3, .Name = "digital playback to analog out", .Reset = 0x80},
    {.File = RegisterFile::Mixer, .Index = 4, .Name = "analog in to digital out", .Reset = 0x80},
    {.File = RegisterFile::Mixer, .Index = 5, .Name = "digital in to digital out", .Reset = 0x80},
    {.File = RegisterFile::Mixer, .Index = 6, .Name = "analog playback to digital out", .Reset = 0x80},
    {.File = RegisterFile::Mixer, .Index = 7, .Name = "digital playback to digital out", .Reset = 0x80},
};

uint8_t& Place(CardState& card, RegisterFile file, unsigned channel, unsigned index) {
    switch (file) {
    case RegisterFile::Card:
        return card.CardFile[index];
    case RegisterFile::Port:
        return card.PortFiles[channel][index];
    case RegisterFile::Indirect:
        return card.IndirectFile[index];
    case RegisterFile::Mixer:
        return card.MixerFile[index];
    }
    return card.CardFile[index];
}

uint8_t& PlaceOf(CardState& card, unsigned channel, const RegisterDefinition& definition) {
    if (definition.WindowIndex != 0) {
        return Place(card, definition.WindowFile, channel, card.CardFile[definition.WindowIndex]);
    }
    return Place(card, definition.File, channel, definition.Index);
}

RegisterView View(const char* file, const RegisterDefinition& definition, uint8_t value) {
    RegisterView view{file, definition.Index, definition.Name, value, {}};
    for (const FieldDefinition& field : definition.Fields) {
        if (field.Name) {
            view.Fields.push_back({field.Name, static_cast<unsigned>(value & field.Mask) >>
                                                   std::countr_zero(field.Mask)});
        }
    }
    return view;
}

}  // namespace

std::span<const RegisterDefinition> RegisterTable() { return Table; }

const RegisterDefinition* FindRegister(RegisterFile file, unsigned channel, uint32_t index) {
    for (const RegisterDefinition& definition : Table) {
        if (definition.File == file && definition.Index == index &&
            (file != RegisterFile::Port || (definition.Channels >> channel & 1) != 0)) {
            return &definition;
        }
    }
    return nullptr;
}

uint8_t ReadRegisterValue(MachineState& machine, unsigned card, unsigned channel,
                          const RegisterDefinition& definition, int64_t now) {
    CardState& state = machine.Cards[card];
    return definition.Read ? definition.Read(state, now) : PlaceOf(state, channel, definition);
}

void WriteRegisterValue(MachineState& machine, unsigned card, unsigned channel,
                        const RegisterDefinition& definition, uint8_t value, uint8_t mask, int64_t now) {
    uint8_t& place = PlaceOf(machine.Cards[card], channel, definition);
    const uint8_t before = place;
    const uint8_t changing = mask & definition.Writable;
    place = static_cast<uint8_t>((before & ~changing) | (value & changing));
    if (definition.Written && place != before) {
        definition.Written({machine, card, channel, before, place, now});
    }
}

void ResetRegisters(CardState& card, bool softOnly) {
    for (const RegisterDefinition& definition : Table) {
        if (definition.WindowIndex != 0 || (softOnly && !definition.ClearedBySoftReset)) {
            continue;
        }
        const unsigned channels = definition.File == RegisterFile::Port ? definition.Channels : 1;
        for (unsigned channel = 0; channel < ChannelCount; ++channel) {
            if ((channels >> channel & 1) != 0) {
                Place(card, definition.File, channel, definition.Index) = definition.Reset;
            }
        }
    }
}

std::vector<RegisterView> ViewRegisters(MachineState& machine, unsigned card, int64_t now) {
    constexpr const char* ports[] = {"analog in", "digital in", "analog out", "digital out"};
    constexpr const char* files[] = {"card", "", "indirect", "mixer"};
    std::vector<RegisterView> views;
    for (const RegisterDefinition& definition : Table) {
        if (definition.File != RegisterFile::Port) {
            views.push_back(View(files[static_cast<unsigned>(definition.File)], definition,
                                 ReadRegisterValue(machine, card, 0, definition, now)));
        }
    }
    for (unsigned channel = 0; channel < ChannelCount; ++channel) {
        for (const RegisterDefinition& definition : Table) {
            if (definition.File == RegisterFile::Port && (definition.Channels >> channel & 1) != 0) {
                views.push_back(
                    View(ports[channel], definition, ReadRegisterValue(machine, card, channel, definition, now)));
            }
        }
    }
    return views;
}

}  // namespace simulator
