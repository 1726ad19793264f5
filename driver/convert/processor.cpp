#include <windows.h>

#include "convert/routines.h"

#ifdef KESTVOX_VECTOR_UNIT

#include <cpuid.h>

namespace kestvox {

namespace {

// Windows NT 4 neither enables the vector registers nor saves them, whatever the processor has.
bool SystemKeepsVectors() {
    constexpr BYTE firstVersion = 5;
    return LOBYTE(LOWORD(GetVersion())) >= firstVersion;
}

bool ProcessorHasSsse3() {
    constexpr unsigned featureLeaf = 1;
    unsigned a = 0;
    unsigned b = 0;
    unsigned c = 0;
    unsigned d = 0;
    return __get_cpuid(featureLeaf, &a, &b, &c, &d) != 0 && (c & bit_SSSE3) != 0;
}

}  // namespace

bool vector::IsSupported() {
    return SystemKeepsVectors() && ProcessorHasSsse3();
}

}  // namespace kestvox

#endif
