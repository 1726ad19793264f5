#include "simulator/connectors/channel_status.h"

#include <algorithm>
#include <span>

#include "simulator/card/register_map.h"
#include "simulator/clock/clock_source.h"
#include "simulator/machine/machine_state.h"

namespace simulator {
namespace {

// Byte 0
constexpr uint8_t Professional = 0x01;
constexpr uint8_t NonAudio = 0x02;
constexpr uint8_t CopyPermitted = 0x04;
constexpr uint8_t ConsumerEmphasis = 0x38;
constexpr uint8_t ConsumerEmphasis50 = 0x08;
constexpr uint8_t ProfessionalEmphasis = 0x1C;
constexpr uint8_t ProfessionalEmphasis50 = 0x0C;

struct RateField {
    unsigned Byte;
    uint8_t Mask;
    uint8_t Value;
    unsigned Rate;
};
constexpr RateField ProfessionalRates[] = {
    {0, 0xC0, 0x80, 48000}, {0, 0xC0, 0x40, 44100}, {0, 0xC0, 0xC0, 32000},
    {4, 0x78, 0x10, 96000}, {4, 0x78, 0x50, 88200}, {4, 0x78, 0x48, 22050},
};
constexpr RateField ConsumerRates[] = {
    {3, 0x0F, 0x00, 44100}, {3, 0x0F, 0x02, 48000}, {3, 0x0F, 0x03, 32000}};

unsigned RateOf(const CardState& card, std::span<const RateField> fields) {
    const auto told = std::find_if(fields.begin(), fields.end(), [&card](const RateField& field) {
        return (card.IndirectFile[field.Byte] & field.Mask) == field.Value;
    });
    return told != fields.end() ? told->Rate : 0;
}

}  // namespace

std::optional<ChannelStatus> SentStatus(const CardState& card) {
    const uint8_t first = card.IndirectFile[0];
    const bool professional = (first & Professional) != 0;
    const bool sendsProfessional = (card.CardFile[card_register::DigitalTransmitter] & ProfessionalBit) != 0;
    if (!TransmitterRuns(card) || professional != sendsProfessional) {
        return std::nullopt;
    }
    return ChannelStatus{
        .Professional = professional,
        .NonAudio = (first & NonAudio) != 0,
        .CopyPermitted = !professional && (first & CopyPermitted) != 0,
        .Emphasis = professional ? (first & ProfessionalEmphasis) == ProfessionalEmphasis50
                                 : (first & ConsumerEmphasis) == ConsumerEmphasis50,
        .Rate = professional ? RateOf(card, ProfessionalRates) : RateOf(card, ConsumerRates)};
}

}  // namespace simulator
