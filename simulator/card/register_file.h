// The card's registers. A table has a row for each, and reading, writing and resetting them goes by the
// table: a new register is a new row. The machine's lock is held by the caller of everything here.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "simulator/card/register_view.h"
#include "simulator/machine/machine_state.h"

namespace simulator {

enum class RegisterFile : uint8_t { Card, Port, Indirect, Mixer };

// A masked write that has happened, as the hardware behind the register sees it.
struct RegisterChange {
    MachineState& Machine;
    unsigned Card;
    unsigned Channel;  // Port file only
    uint8_t Before;
    uint8_t After;
    int64_t Now;

    CardState& State() const { return Machine.Cards[Card]; }
    bool Rose(uint8_t bit) const { return (~Before & After & bit) != 0; }
    bool Fell(uint8_t bit) const { return (Before & ~After & bit) != 0; }
};

struct FieldDefinition {
    const char* Name;
    uint8_t Mask;
};

// What a register does besides holding its value.
struct RegisterBehaviour {
    // A data register stands for a register of another file, WindowFile: for the one whose number has been
    // written to the card register IndexRegister. 0: this is no data register.
    RegisterFile WindowFile;
    uint8_t IndexRegister;
    uint8_t (*Read)(CardState& card, int64_t now);  // null: what was written
    void (*Written)(const RegisterChange& change);  // null: nothing else happens
};

struct RegisterDefinition {
    RegisterFile File;
    uint8_t Channels;  // Port file: bit set of the channels that have the register; else 1
    uint8_t Index;
    const char* Name;
    uint8_t Reset;     // value after power-up
    uint8_t Writable;  // bits
    bool ClearedBySoftReset;
    RegisterBehaviour Does;
    std::array<FieldDefinition, 5> Fields;  // up to the first without a name
    const char* Meaning = "";               // for docs/registers.md, where name and fields do not tell it

    constexpr bool IsWindow() const { return Does.IndexRegister != 0; }
};

// Defined in register_table.cpp.
std::span<const RegisterDefinition> RegisterTable();

// Null when the card has no such register. `channel` matters for the Port file.
const RegisterDefinition* FindRegister(RegisterFile file, unsigned channel, uint32_t index);

uint8_t ReadRegisterValue(MachineState& machine, unsigned card, unsigned channel,
                          const RegisterDefinition& definition, int64_t now);
void WriteRegisterValue(MachineState& machine, unsigned card, unsigned channel,
                        const RegisterDefinition& definition, uint8_t value, uint8_t mask, int64_t now);

// Gives every register its reset value, as at power-up; with `softOnly` those that a soft reset clears. No
// handler is called: the caller brings the hardware behind the registers in line.
void ResetRegisters(CardState& card, bool softOnly);

std::vector<RegisterView> ViewRegisters(MachineState& machine, unsigned card, int64_t now);

}  // namespace simulator
