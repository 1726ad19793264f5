#include "simulator/card/register_file.h"

#include <bit>
#include <cstdio>

namespace simulator {
namespace {

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
    if (definition.IsWindow()) {
        return Place(card, definition.Does.WindowFile, channel, card.CardFile[definition.Does.IndexRegister]);
    }
    return Place(card, definition.File, channel, definition.Index);
}

// Of the fields that the mask touches.
RegisterView View(const char* file, const RegisterDefinition& definition, uint8_t value,
                  uint8_t mask = 0xFF) {
    RegisterView view{file, definition.Index, definition.Name, value, {}};
    for (const FieldDefinition& field : definition.Fields) {
        if (field.Name && (field.Mask & mask) != 0) {
            view.Fields.push_back(
                {field.Name, static_cast<unsigned>(value & field.Mask) >> std::countr_zero(field.Mask)});
        }
    }
    return view;
}

}  // namespace

const RegisterDefinition* FindRegister(RegisterFile file, unsigned channel, uint32_t index) {
    for (const RegisterDefinition& definition : RegisterTable()) {
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
    return definition.Does.Read ? definition.Does.Read(state, now) : PlaceOf(state, channel, definition);
}

void WriteRegisterValue(MachineState& machine, unsigned card, unsigned channel,
                        const RegisterDefinition& definition, uint8_t value, uint8_t mask, int64_t now) {
    uint8_t& place = PlaceOf(machine.Cards[card], channel, definition);
    const uint8_t before = place;
    const uint8_t changing = mask & definition.Writable;
    place = static_cast<uint8_t>((before & ~changing) | (value & changing));
    if (definition.Does.Written && place != before) {
        definition.Does.Written({machine, card, channel, before, place, now});
    }
}

void ResetRegisters(CardState& card, bool softOnly) {
    for (const RegisterDefinition& definition : RegisterTable()) {
        if (definition.IsWindow() || (softOnly && !definition.ClearedBySoftReset)) {
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

std::string DescribeWrite(uint32_t channel, uint32_t index, uint8_t value, uint8_t mask) {
    const RegisterFile file = channel == ControlChannel ? RegisterFile::Card : RegisterFile::Port;
    const RegisterDefinition* definition = FindRegister(file, channel, index);
    if (!definition) {
        return "";
    }
    const RegisterView view = View("", *definition, value & mask, mask);
    std::string text = view.Name;
    if (definition->Fields[0].Name == nullptr) {
        char number[8];
        std::snprintf(number, sizeof number, ": %02X", static_cast<unsigned>(view.Value));
        return text + number;
    }
    const char* separator = ": ";
    for (const RegisterField& field : view.Fields) {
        text += separator + field.Name + "=" + std::to_string(field.Value);
        separator = ", ";
    }
    return text;
}

std::vector<RegisterView> ViewRegisters(MachineState& machine, unsigned card, int64_t now) {
    constexpr const char* Files[] = {"card", "", "indirect", "mixer"};
    std::vector<RegisterView> views;
    for (const RegisterDefinition& definition : RegisterTable()) {
        if (definition.File != RegisterFile::Port) {
            views.push_back(View(Files[static_cast<unsigned>(definition.File)], definition,
                                 ReadRegisterValue(machine, card, 0, definition, now)));
        }
    }
    for (unsigned channel = 0; channel < ChannelCount; ++channel) {
        for (const RegisterDefinition& definition : RegisterTable()) {
            if (definition.File == RegisterFile::Port && (definition.Channels >> channel & 1) != 0) {
                views.push_back(View(ChannelNames[channel], definition,
                                     ReadRegisterValue(machine, card, channel, definition, now)));
            }
        }
    }
    return views;
}

}  // namespace simulator
