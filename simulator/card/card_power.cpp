#include "simulator/card/card_power.h"

#include <algorithm>

#include "simulator/card/register_file.h"
#include "simulator/card/register_map.h"
#include "simulator/channels/channel_run.h"
#include "simulator/clock/clock_control.h"
#include "simulator/clock/converters.h"
#include "simulator/clock/rate_measurement.h"

namespace simulator {
namespace {

constexpr uint32_t FirstSerialNumber = 12345;

void PutWord(std::array<uint8_t, NvramPageSize>& page, unsigned word, uint32_t value) {
    page[2 * word] = static_cast<uint8_t>(value >> 8);
    page[2 * word + 1] = static_cast<uint8_t>(value);
}

std::array<uint8_t, NvramPageSize> MakeIdentityPage(unsigned ordinal) {
    std::array<uint8_t, NvramPageSize> page{};
    PutWord(page, 2, 'B');
    PutWord(page, 3, 3);  // board revision
    PutWord(page, 4, 7);  // FPGA revision
    PutWord(page, 5, FirstSerialNumber + ordinal);
    uint32_t sum = 0;
    for (unsigned word = 0; word < NvramPageSize / 2; ++word) {
        sum += static_cast<uint32_t>(page[2 * word] << 8 | page[2 * word + 1]);
    }
    PutWord(page, NvramPageSize / 2 - 1, 0xFFFF - sum % 0x10000);
    return page;
}

std::array<uint8_t, NvramPageSize> MakeVersionPage() {
    std::array<uint8_t, NvramPageSize> page{};
    page[122] = 1;
    page[123] = 2;
    PutWord(page, 62, 37);
    return page;
}

std::array<uint8_t, PciConfigSize> MakePciConfig(unsigned ordinal) {
    std::array<uint8_t, PciConfigSize> config{};
    const uint8_t header[] = {
        0x4B, 0x7A, 0x01, 0x56,  // vendor, device
        0x06, 0x00, 0x00, 0x02,  // command: memory, bus master; status
        0x01, 0x00, 0x01, 0x04,  // revision; class: multimedia, audio
        0x08, 0x40, 0x00, 0x00,  // cache line, latency timer
        0x00, 0x00, 0x00, 0xF4,  // first base address
    };
    std::copy(std::begin(header), std::end(header), config.begin());
    config[0x12] = static_cast<uint8_t>(ordinal);
    config[0x2C] = 0x5A;  // subsystem vendor, subsystem
    config[0x2D] = 0x48;
    config[0x2E] = 0x02;
    config[0x3C] = static_cast<uint8_t>(9 + ordinal % 3);  // interrupt line
    config[0x3D] = 1;                                      // interrupt pin A
    return config;
}

// Base addresses are multiples of the 64 KB that the card decodes.
struct WritableRange {
    unsigned Offset;
    uint8_t Bits;
};
constexpr WritableRange WritableBytes[] = {
    {0x04, 0x47}, {0x05, 0x01}, {0x0C, 0xFF}, {0x0D, 0xFF}, {0x12, 0xFF}, {0x13, 0xFF}, {0x3C, 0xFF},
};

// The start holds go as well, and with them what waits behind them on the cards that follow.
void Reset(MachineState& machine, unsigned card, bool softOnly, int64_t now) {
    const uint8_t holds = machine.Cards[card].CardFile[card_register::StartHold];
    ResetRegisters(machine.Cards[card], softOnly);
    machine.Cards[card].FaultLatched = false;
    ReleaseWaiting(machine, card, holds, now);
}

}  // namespace

void MakeCard(CardState& card, unsigned ordinal) {
    card = CardState{};
    card.Present = true;
    card.Supplier = ordinal;
    card.ClockValid = true;
    card.IdentityPage = MakeIdentityPage(ordinal);
    card.VersionPage = MakeVersionPage();
    card.PciConfig = MakePciConfig(ordinal);
    ResetRegisters(card, false);
    ResetMeasurements(card);
}

void PowerUp(MachineState& machine, unsigned card, int64_t now) {
    for (unsigned channel = 0; channel < ChannelCount; ++channel) {
        ChannelState& state = machine.Cards[card].Channels[channel];
        const bool lost = state.Acquired || state.PowerLost;
        ReleaseChannelHardware(machine, card, channel, now);
        state.PowerLost = lost;
    }
    Reset(machine, card, false, now);
    ResetMeasurements(machine.Cards[card]);
    ResetConverters(machine.Cards[card]);
    ResolveClocks(machine, now);
}

void SoftResetCard(MachineState& machine, unsigned card, int64_t now) {
    CardState& state = machine.Cards[card];
    for (unsigned channel = 0; channel < ChannelCount; ++channel) {
        DisarmChannelRun(machine, card, channel, now);
        StopChannelTransfer(machine, card, channel, now);
        state.Channels[channel].Position = 0;
    }
    Reset(machine, card, true, now);
    state.PortMeasurement.ReceiverOn = false;
}

uint8_t WritablePciBits(unsigned offset) {
    for (const WritableRange& range : WritableBytes) {
        if (range.Offset == offset) {
            return range.Bits;
        }
    }
    return 0;
}

}  // namespace simulator
