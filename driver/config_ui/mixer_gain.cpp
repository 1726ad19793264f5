#include "config_ui/mixer_gain.h"

#include <algorithm>
#include <atomic>
#include <iterator>

namespace kestvox {

namespace {

struct GainEntry {
    BYTE Gain;
    SHORT Tenths;
};

// Codes 18 to 83.
constexpr GainEntry Gains[] = {
    {0, MinusInfinity}, {1, -420},  {1, -420},  {1, -420},  {1, -420},  {1, -420},  {1, -420},  {2, -360},
    {2, -360},          {2, -360},  {2, -360},  {3, -325},  {3, -325},  {4, -300},  {4, -300},  {4, -300},
    {5, -281},          {5, -281},  {6, -265},  {7, -251},  {7, -251},  {8, -240},  {9, -230},  {10, -220},
    {11, -212},         {12, -205}, {13, -198}, {14, -191}, {15, -185}, {16, -180}, {17, -174}, {19, -165},
    {20, -160},         {22, -152}, {23, -148}, {25, -141}, {27, -134}, {29, -128}, {30, -125}, {33, -117},
    {35, -112},         {37, -107}, {39, -102}, {42, -96},  {44, -92},  {47, -86},  {50, -81},  {53, -76},
    {56, -71},          {59, -66},  {62, -62},  {65, -58},  {69, -53},  {72, -49},  {76, -44},  {80, -40},
    {84, -36},          {88, -32},  {93, -27},  {97, -23},  {102, -19}, {107, -15}, {112, -11}, {117, -7},
    {123, -2},          {128, 0},
};
static_assert(std::size(Gains) == HighestGainCode - LowestGainCode + 1);

const GainEntry& FindGain(DWORD code) {
    return Gains[std::clamp(code, LowestGainCode, HighestGainCode) - LowestGainCode];
}

void StoreShared(DWORD& word, DWORD value) {
    std::atomic_ref<DWORD>(word).store(value, std::memory_order_relaxed);
}

}  // namespace

DWORD GainOfCode(DWORD code) {
    return FindGain(code).Gain;
}

int TenthsOfDecibel(DWORD code) {
    return FindGain(code).Tenths;
}

void SetGainCode(MonitorBlock& block, unsigned input, DWORD code) {
    StoreShared(block.GainCode[input], code);
    StoreShared(block.GainValue[input], GainOfCode(code));
}

DWORD GainCodeOf(MonitorBlock& block, unsigned input) {
    return std::atomic_ref<DWORD>(block.GainCode[input]).load(std::memory_order_relaxed);
}

void CopyGains(const MonitorBlock& from, MonitorBlock& to) {
    StoreShared(to.BlockSize, from.BlockSize);
    for (unsigned input = 0; input < MixerInputs; ++input) {
        StoreShared(to.GainCode[input], from.GainCode[input]);
        StoreShared(to.GainValue[input], from.GainValue[input]);
    }
}

}  // namespace kestvox
