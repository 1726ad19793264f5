#include "simulator/connectors/wiring.h"

#include <algorithm>
#include <utility>

#include "simulator/card/register_map.h"
#include "simulator/clock/converters.h"
#include "simulator/clock/rate_measurement.h"
#include "simulator/connectors/mixer.h"

namespace simulator {
namespace {

using namespace card_register;

bool IsDigital(unsigned port) {
    return port == static_cast<unsigned>(Port::Digital);
}

bool OutputIsOpen(const CardState& card, unsigned port, int64_t time) {
    const bool muted =
        (card.CardFile[IsDigital(port) ? DigitalOutputControl : AnalogOutputControl] & MuteBits) != 0;
    return !muted && (IsDigital(port) ? DigitalOutputWorks(card, time) : AnalogOutputWorks(card, time));
}

// A digital input gives samples when its port's receiver has settled on a signal.
bool InputIsOpen(const MachineState& machine, unsigned card, unsigned port, int64_t time) {
    const CardState& state = machine.Cards[card];
    if ((state.CardFile[IsDigital(port) ? DigitalInputControl : AnalogInputControl] & MuteBits) != 0) {
        return false;
    }
    return IsDigital(port) ? state.PortMeasurement.Settled(time) && DigitalInputRate(machine, card, time) != 0
                           : AnalogInputWorks(state, time);
}

}  // namespace

void Wiring::PlugIn(unsigned card, unsigned port, InputSignal signal) {
    jacks_[card][port].PlugIn(std::move(signal));
    hasCables_ = std::ranges::any_of(jacks_, [](const auto& jacks) {
        return std::ranges::any_of(
            jacks, [](const InputJack& jack) { return jack.Signal().What == InputSignal::Kind::Cable; });
    });
}

bool Wiring::HearsInputs(const CardState& state, unsigned card, unsigned port, int64_t time) const {
    const auto hears = [&](unsigned input) {
        return state.MixerFile[port * MixerSources + input] != 0 && !jacks_[card][input].IsSilent();
    };
    return OutputIsOpen(state, port, time) && (hears(0) || hears(1));
}

// `frames` is the length of the block that is over.
void Wiring::Renew(Wire& wire, size_t frames) {
    if (wire.State != Wire::Progress::Known || (frames > 0 && !wire.Sounds)) {
        wire.Last = Frame{};
    } else if (frames > 0) {
        wire.Last = wire.Frames[frames - 1];
    }
    wire.State = Wire::Progress::Unknown;
}

void Wiring::BeginBlock(const MachineState& machine, int64_t time) {
    machine_ = &machine;
    time_ = time;
    for (unsigned card = 0; card < machine.CardCount; ++card) {
        for (unsigned port = 0; port < 2; ++port) {
            Renew(inputs_[card][port], players_[card].PreviousFrames());
            Renew(outputs_[card][port], players_[card].PreviousFrames());
            if (const auto first = players_[card].FirstRecorded(machine.Cards[card], port)) {
                jacks_[card][port].Begin(*first);
            }
        }
    }
}

const Frame* Wiring::Input(unsigned card, unsigned port) {
    return Signal(inputs_[card][port], &Wiring::FillInput, card, port);
}

const Frame* Wiring::Output(unsigned card, unsigned port) {
    return Signal(outputs_[card][port], &Wiring::FillOutput, card, port);
}

const Frame* Wiring::Signal(Wire& wire, Fill fill, unsigned card, unsigned port) {
    if (wire.State == Wire::Progress::UnderWay) {
        circle_ = true;
        return nullptr;
    }
    if (wire.State == Wire::Progress::Unknown) {
        WorkOut(wire, fill, card, port);
    }
    return wire.Sounds ? wire.Frames.data() : nullptr;
}

// What lies in a circle sounds differently from each of its connectors, so it is not kept for the others.
void Wiring::WorkOut(Wire& wire, Fill fill, unsigned card, unsigned port) {
    wire.State = Wire::Progress::UnderWay;
    ++depth_;
    wire.Sounds = (this->*fill)(card, port, wire.Frames.data());
    --depth_;
    wire.State = Wire::Progress::Known;
    if (depth_ > 0) {
        workedOut_.push_back(&wire);
        return;
    }
    if (circle_) {
        for (Wire* passed : workedOut_) {
            passed->State = Wire::Progress::Unknown;
        }
    }
    circle_ = false;
    workedOut_.clear();
}

bool Wiring::FillInput(unsigned card, unsigned port, Frame* out) {
    InputJack& jack = jacks_[card][port];
    if (jack.IsSilent() || !InputIsOpen(*machine_, card, port, time_)) {
        return false;
    }
    if (jack.Signal().What == InputSignal::Kind::Cable) {
        return FillFromCable(card, jack.Signal(), out);
    }
    const Block& block = players_[card].CurrentBlock();
    return jack.Generate(block.From, block.Frames, machine_->Cards[card].Clock.Rate, out);
}

// Between clocks a frame is the last one that the sender had finished by the frame's own end.
bool Wiring::FillFromCable(unsigned card, const InputSignal& cable, Frame* out) {
    if (cable.Card >= machine_->CardCount) {
        return false;
    }
    const unsigned port = static_cast<unsigned>(cable.Output);
    const CardState& sender = machine_->Cards[cable.Card];
    const CardState& receiver = machine_->Cards[card];
    const Block& sent = players_[cable.Card].CurrentBlock();
    const Block& block = players_[card].CurrentBlock();
    const Frame* frames = Output(cable.Card, port);
    const Frame& last = outputs_[cable.Card][port].Last;
    if (!frames && last == Frame{}) {
        return false;
    }
    const bool oneClock = sender.Clock == receiver.Clock;
    for (size_t i = 0; i < block.Frames; ++i) {
        const uint64_t tick =
            oneClock ? block.From + i + static_cast<uint64_t>(sender.TickOffset - receiver.TickOffset)
                     : sender.TickAt(receiver.TimeOfTick(block.From + i + 1)) - 1;
        const uint64_t at = tick - sent.From;
        if (at < sent.Frames) {
            out[i] = frames ? frames[at] : Frame{};
        } else {
            out[i] = tick + 1 == sent.From ? last : Frame{};
        }
    }
    return true;
}

bool Wiring::FillOutput(unsigned card, unsigned port, Frame* out) {
    const CardState& state = machine_->Cards[card];
    if (!OutputIsOpen(state, port, time_)) {
        return false;
    }
    std::array<uint8_t, MixerSources> gains{};
    std::copy_n(state.MixerFile.begin() + port * MixerSources, MixerSources, gains.begin());
    std::array<const Frame*, MixerSources> sources{};
    for (unsigned source = 0; source < MixerSources; ++source) {
        if (gains[source] != 0) {
            sources[source] = source < 2 ? Input(card, source) : players_[card].Playback(source - 2);
        }
    }
    if (std::all_of(sources.begin(), sources.end(), [](const Frame* source) { return !source; })) {
        return false;
    }
    MixFrames(sources, gains, players_[card].CurrentBlock().Frames, out);
    return true;
}

}  // namespace simulator
