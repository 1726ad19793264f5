#include "config_ui/mixer_gain.h"

#include <algorithm>
#include <atomic>
#include <cstdint>

namespace kestvox {

namespace {

constexpr DWORD CodeCount = HighestGainCode + 1;

constexpr uint16_t Gains[CodeCount] = {
    0,  0,  0,  0,  0,  0,  0,   0,   0,   0,   0,   0,   0,  0,  0,  0,  0,  0,   // 0 to 17
    0,  1,  1,  1,  1,  1,  1,   2,   2,   2,   2,   3,   3,  4,  4,  4,  5,  5,   // 18 to 35
    6,  7,  7,  8,  9,  10, 11,  12,  13,  14,  15,  16,  17, 19, 20, 22, 23, 25,  // 36 to 53
    27, 29, 30, 33, 35, 37, 39,  42,  44,  47,  50,  53,  56, 59, 62, 65, 69, 72,  // 54 to 71
    76, 80, 84, 88, 93, 97, 102, 107, 112, 117, 123, 128,                          // 72 to 83
};

constexpr int16_t Off = MinusInfinity;

// What the faders say; the gains are as near to it as 128 steps allow.
constexpr int16_t Tenths[CodeCount] = {
    Off,  Off,  Off,  Off,  Off,  Off,  Off,  Off,  Off,  Off,   // 0 to 9
    Off,  Off,  Off,  Off,  Off,  Off,  Off,  Off,  Off,         // 10 to 18
    -420, -420, -420, -420, -420, -420, -360, -360, -360, -360,  // 19 to 28
    -325, -325, -300, -300, -300, -281, -281, -265, -251, -251,  // 29 to 38
    -240, -230, -220, -212, -205, -198, -191, -185, -180, -174,  // 39 to 48
    -165, -160, -152, -148, -141, -134, -128, -125, -117, -112,  // 49 to 58
    -107, -102, -96,  -92,  -86,  -81,  -76,  -71,  -66,  -62,   // 59 to 68
    -58,  -53,  -49,  -44,  -40,  -36,  -32,  -27,  -23,  -19,   // 69 to 78
    -15,  -11,  -7,   -2,   0,                                   // 79 to 83
};

void Store(DWORD& word, DWORD value) {
    std::atomic_ref<DWORD>(word).store(value, std::memory_order_relaxed);
}

}  // namespace

DWORD GainOfCode(DWORD code) {
    return Gains[std::min(code, HighestGainCode)];
}

int TenthsOfDecibel(DWORD code) {
    return Tenths[std::min(code, HighestGainCode)];
}

void SetGainCode(MonitorBlock& block, unsigned input, DWORD code) {
    Store(block.GainCode[input], code);
    Store(block.GainValue[input], GainOfCode(code));
}

}  // namespace kestvox
