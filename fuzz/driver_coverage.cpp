// Tells libFuzzer what ran in the driver. Its own counters lie in the module that they count and would be
// gone when the driver is unloaded, so the driver reports every function it enters, and where from, to the
// program.
#include <cstddef>
#include <cstdint>

namespace {

constexpr size_t CounterCount = 1 << 14;

[[gnu::section("__libfuzzer_extra_counters")]] uint8_t counters[CounterCount];

}  // namespace

// The distance of the two is the same wherever the driver has been loaded.
extern "C" void __cyg_profile_func_enter(void* function, void* caller) {
    const auto distance = reinterpret_cast<uintptr_t>(function) - reinterpret_cast<uintptr_t>(caller);
    uint8_t& counter = counters[(distance * 2654435761u >> 7) % CounterCount];
    counter = static_cast<uint8_t>(counter + (counter < 255 ? 1 : 0));
}

extern "C" void __cyg_profile_func_exit(void*, void*) {}
