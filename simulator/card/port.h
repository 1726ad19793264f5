// The two ports that a card has in each direction.
#pragma once

namespace simulator {

enum class Port { Analog = 0, Digital = 1 };

// A card's channels in the requests: inputs first.
constexpr uint32_t InputChannel(Port port) {
    return static_cast<uint32_t>(port);
}
constexpr uint32_t OutputChannel(Port port) {
    return 2 + static_cast<uint32_t>(port);
}

}  // namespace simulator
