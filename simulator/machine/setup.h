// What a machine is set up with.
#pragma once

namespace simulator {

inline constexpr unsigned MaxCards = 16;

enum class TimeKind { Real, Stepped };

}  // namespace simulator
