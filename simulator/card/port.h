// The two ports that a card has in each direction.
#pragma once

namespace simulator {

enum class Port { Analog = 0, Digital = 1 };

}  // namespace simulator
