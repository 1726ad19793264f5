#include "simulator/requests/rules.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "simulator/card/register_map.h"

namespace simulator {
namespace {

// Requests that have failed on purpose, cards that have gone and programs that were killed leave even a
// correct driver with a card that is not as it should be, until its last stream is closed.
void Require(bool kept, const RequestCall& call, const char* rule) {
    if (kept || !call.Machine.Strict || call.Machine.Disturbed) {
        return;
    }
    std::fprintf(stderr, "the simulated card %u: the driver %s\n", call.File.Card, rule);
    std::abort();
}

bool AnyMoves(const CardState& card) {
    return std::any_of(card.Channels.begin(), card.Channels.end(),
                       [](const ChannelState& channel) { return channel.Moving; });
}

bool Is(const RegisterDefinition& definition, RegisterFile file, uint8_t index) {
    return definition.File == file && definition.Index == index;
}

const Measurement* MeasurementOf(const CardState& card, const RegisterDefinition& definition) {
    if (Is(definition, RegisterFile::Card, card_register::MeasuredRate)) {
        return &card.CardMeasurement;
    }
    return Is(definition, RegisterFile::Port, port_register::MeasuredRate) ? &card.PortMeasurement : nullptr;
}

// The bits of the register that decide the clock's rate; none when the whole register is written: a card is
// initialised without regard to what it does.
uint8_t ClockBits(const RegisterDefinition& definition, uint8_t mask) {
    if (Is(definition, RegisterFile::Card, card_register::ClockSelect)) {
        return (mask & DriveLinkBit) != 0 ? 0 : RateCodeMask | SourceMask;
    }
    return Is(definition, RegisterFile::Card, card_register::ClockControl) ? DoubleSpeedBit : 0;
}

}  // namespace

void CheckArm(const RequestCall& call) {
    Require(call.Channel().TransferAsked, call, "arms a channel whose transfer it has not started");
}

void CheckRegisterRead(const RequestCall& call, const RegisterDefinition& definition) {
    const Measurement* measurement = MeasurementOf(call.Card(), definition);
    const bool ready = measurement == nullptr || !measurement->Running ||
                       call.Card().TickAt(call.Now) >= measurement->ReadyTick;
    Require(ready, call, "reads a measurement that is not finished");
}

void CheckRegisterWrite(const RequestCall& call, const RegisterDefinition& definition, uint8_t value,
                        uint8_t mask) {
    const CardState& card = call.Card();
    if (const uint8_t clock = ClockBits(definition, mask); clock != 0) {
        const uint8_t changed = (card.CardFile[definition.Index] ^ value) & mask & clock;
        Require(changed == 0 || card.Held() || !AnyMoves(card), call,
                "changes the clock while samples move, and does not hold it");
    }
    if (Is(definition, RegisterFile::Card, card_register::StartHold)) {
        const uint8_t released = mask & static_cast<uint8_t>(~value) & (HoldOutputs | HoldInputs);
        Require(released == 0 || (released & card.HoldsSeen) != 0, call,
                "releases a start hold that was never set");
    }
}

}  // namespace simulator
