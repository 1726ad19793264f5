#include "tests/reliability/tally.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <mutex>
#include <string>

namespace {

std::mutex lock;

std::map<std::string, unsigned long>& Counts() {
    static std::map<std::string, unsigned long> counts;
    return counts;
}

struct Printer : testing::Environment {
    void TearDown() override {
        for (const auto& [name, count] : Counts()) {
            std::printf("tally: %s %lu\n", name.c_str(), count);
        }
    }
};

[[maybe_unused]] const testing::Environment* const TallyPrinter =
    testing::AddGlobalTestEnvironment(new Printer);

}  // namespace

void tally::Add(const char* name, unsigned long count) {
    const std::lock_guard guard(lock);
    Counts()[name] += count;
}
