#include "simulator/machine/listener.h"

#include <algorithm>

#include "simulator/machine/claims.h"
#include "simulator/machine/machine_state.h"

namespace simulator {

Listener::Listener(unsigned card, Port port) {
    const host::MachineGuard guard;
    MachineState& machine = Machine();
    const auto place = std::ranges::find_if(
        machine.Taps, [](const Tap& tap) { return tap.Listener.Id == 0 || !host::IsAlive(tap.Listener); });
    if (place == machine.Taps.end()) {
        return;
    }
    tap_ = &*place;
    tap_->Listener = host::CurrentProcess();
    tap_->Card = card;
    tap_->Port = static_cast<uint32_t>(port);
    tap_->Given = 0;
    ++machine.TapChanges;
}

Listener::~Listener() {
    if (tap_) {
        const host::MachineGuard guard;
        tap_->Listener = host::Process{};
        ++Machine().TapChanges;
    }
}

Listener::Heard Listener::Take() {
    const host::MachineGuard guard;
    CardState& card = Machine().Cards[tap_->Card];
    Heard heard;
    heard.Rate = card.Clock.Rate;
    heard.InUse = IsClaimed(card.Channels[FirstOutput + tap_->Port]);
    const uint64_t oldest = tap_->Given - std::min(tap_->Given, Tap::Room);
    if (taken_ < oldest) {
        heard.Lost = oldest - taken_;
        taken_ = oldest;
    }
    heard.Frames.reserve(static_cast<size_t>(tap_->Given - taken_));
    while (taken_ < tap_->Given) {
        heard.Frames.push_back(tap_->Ring[taken_++ % Tap::Room]);
    }
    return heard;
}

}  // namespace simulator
