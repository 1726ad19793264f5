#include "tests/support/system.h"

#include <chrono>
#include <thread>

bool test_system::UsageComesTo(const std::string& usage) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (Usage() != usage) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}
