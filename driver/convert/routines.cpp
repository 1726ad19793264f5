// Which set of conversion routines the library uses.
#include "convert/routines.h"

#ifdef KESTVOX_VECTOR_UNIT
#include <windows.h>

#include <cpuid.h>
#endif

#include <atomic>

namespace kestvox {

#ifdef KESTVOX_VECTOR_UNIT

namespace {

// Windows NT 4 neither enables the vector registers nor saves them, whatever the processor has.
bool SystemKeepsVectors() {
    constexpr BYTE FirstVersion = 5;
    return LOBYTE(LOWORD(GetVersion())) >= FirstVersion;
}

bool ProcessorHasSsse3() {
    constexpr unsigned FeatureLeaf = 1;
    unsigned a = 0;
    unsigned b = 0;
    unsigned c = 0;
    unsigned d = 0;
    return __get_cpuid(FeatureLeaf, &a, &b, &c, &d) != 0 && (c & bit_SSSE3) != 0;
}

}  // namespace

bool vector::IsSupported() {
    return SystemKeepsVectors() && ProcessorHasSsse3();
}

#endif

namespace {

enum class Choice : uint8_t { None, Portable, Vector };

// Made at the first conversion: asking the processor costs more than a short one. Threads that ask at once
// come to the same choice.
std::atomic<Choice> Chosen{Choice::None};

bool UseVectors() {
    Choice choice = Chosen.load(std::memory_order_relaxed);
    if (choice == Choice::None) {
        choice = vector::IsSupported() ? Choice::Vector : Choice::Portable;
        Chosen.store(choice, std::memory_order_relaxed);
    }
    return choice == Choice::Vector;
}

}  // namespace

void ExpandCompanded(int16_t* destination, const uint8_t* source, const CompandingTable& table,
                     size_t count) {
    (UseVectors() ? vector::ExpandCompanded : portable::ExpandCompanded)(destination, source, table, count);
}

void ExpandPacked24(uint32_t* destination, const uint8_t* source, size_t count) {
    (UseVectors() ? vector::ExpandPacked24 : portable::ExpandPacked24)(destination, source, count);
}

void PackCapture24(uint8_t* destination, const uint32_t* source, size_t count) {
    (UseVectors() ? vector::PackCapture24 : portable::PackCapture24)(destination, source, count);
}

void DitherCapture8(uint8_t* destination, const int32_t* source, size_t count, uint32_t type,
                    unsigned channels, DitherState& state) {
    (UseVectors() ? vector::DitherCapture8 : portable::DitherCapture8)(destination, source, count, type,
                                                                       channels, state);
}

void DitherCapture16(int16_t* destination, const int32_t* source, size_t count, uint32_t type,
                     unsigned channels, DitherState& state) {
    (UseVectors() ? vector::DitherCapture16 : portable::DitherCapture16)(destination, source, count, type,
                                                                         channels, state);
}

}  // namespace kestvox
