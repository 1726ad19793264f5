// Calls that a test makes fail (FailCall in platform/inspect.h), as the failing function sees them.
#pragma once

#include <atomic>

namespace platform {

// How many failures are waiting for their call.
extern std::atomic<int> armedCallFailures;

bool CountCall(const char* function);

// True when this very call of `function` is to fail. Ask once in each call, before any effect.
inline bool CallFails(const char* function) {
    return armedCallFailures.load(std::memory_order_relaxed) != 0 && CountCall(function);
}

}  // namespace platform
