// The settings of one card that outlive a session; settings/ loads and saves them.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstddef>

namespace kestvox {

// Words that several threads and processes read and write. Lock-free, so they work across processes
// in the shared section; increments and decrements are the processor's interlocked operations.
using SharedWord = std::atomic<DWORD>;
using SharedCount = std::atomic<LONG>;
static_assert(SharedWord::is_always_lock_free && SharedCount::is_always_lock_free);
static_assert(sizeof(SharedWord) == 4 && sizeof(SharedCount) == 4);

inline constexpr unsigned NameLength = 51;  // UTF-16 code units, terminator included
inline constexpr unsigned PathLength = 151;
inline constexpr unsigned MixerInputs = 8;

// Clock source codes. 0x20, 0x40 and 0x60 are also the pattern of card register 32, bits 5 and 6.
enum ClockSourceCode : DWORD {
    InternalClock = 0,
    LinkClock = 32,  // follows the master over the card-to-card link
    DigitalInputClock = 64,
    PllClock = 96,
    AutomaticClock = 97,  // chosen anew each time the clock is programmed
};

// Gains of the monitor mixer, kept in the registry as it lies in memory.
// Input i = 4 x destination + source; destinations: 0 analog output, 1 digital output; sources:
// 0 analog input, 1 digital input, 2 analog playback, 3 digital playback.
struct MonitorBlock {
    DWORD BlockSize;               // 68; any other value marks a block that is not valid
    DWORD GainCode[MixerInputs];   // fader positions, 0..83
    DWORD GainValue[MixerInputs];  // linear gain for the card, 0..128, 128 = 0 dB
};
static_assert(sizeof(MonitorBlock) == 68);
static_assert(offsetof(MonitorBlock, GainCode) == 4 && offsetof(MonitorBlock, GainValue) == 36);

// All settings but the name, which has its place in the card record.
struct CardSettings {
    WCHAR Master[PathLength];  // RegistryPath of the clock master; empty: follows nobody
    SharedWord Left24;         // 24-bit samples in 32-bit slots left-justified
    SharedWord AdvancedMonitoring;
    SharedWord Punchin;       // record mode: 1 punch-in, 0 lock to playback
    SharedWord Professional;  // S/PDIF channel status professional, else consumer
    SharedWord CopyProtect;
    SharedWord NonAudio;
    SharedWord Preemphasis;
    SharedWord CheckClocks;  // a clock or rate that is not right fails the open
    MonitorBlock Monitor;
    SharedWord ClockSource;  // ClockSourceCode
    SharedWord DitherADC;    // 0 none, 1..4 dither types of 8- and 16-bit capture
};

}  // namespace kestvox
