#include "platform/kernel/call_failure.h"

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "platform/inspect.h"

namespace platform {

std::atomic<int> armedCallFailures{0};

namespace {

std::mutex countdownLock;

// For each function, how many calls are left until each of its failures.
std::map<std::string, std::vector<unsigned>, std::less<>>& Countdowns() {
    static auto& countdowns = *new std::map<std::string, std::vector<unsigned>, std::less<>>;
    return countdowns;
}

}  // namespace

bool CountCall(const char* function) {
    const std::lock_guard guard(countdownLock);
    const auto found = Countdowns().find(function);
    if (found == Countdowns().end()) {
        return false;
    }
    const size_t fired = std::erase_if(found->second, [](unsigned& left) { return --left == 0; });
    armedCallFailures.fetch_sub(static_cast<int>(fired), std::memory_order_relaxed);
    return fired != 0;
}

void FailCall(const char* function, unsigned nth) {
    if (nth == 0) {
        return;
    }
    const std::lock_guard guard(countdownLock);
    Countdowns()[function].push_back(nth);
    armedCallFailures.fetch_add(1, std::memory_order_relaxed);
}

bool CallFailuresAreWaiting() {
    return armedCallFailures.load(std::memory_order_relaxed) != 0;
}

void ClearCallFailures() {
    const std::lock_guard guard(countdownLock);
    Countdowns().clear();
    armedCallFailures.store(0, std::memory_order_relaxed);
}

}  // namespace platform
