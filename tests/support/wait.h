// Waiting for what another thread or process does a moment later.
#pragma once

#include <chrono>
#include <thread>

// Whether the condition comes true; a minute is long even for a busy machine.
template <typename Condition>
bool ComesTrue(Condition condition, std::chrono::seconds within = std::chrono::minutes(1)) {
    const auto end = std::chrono::steady_clock::now() + within;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}
