// One card as every process of the machine sees it. Records live in the shared section: plain values
// only, no handles and no pointers.
//
// Counts change only by interlocked operations; the other words are written without a lock. Open and
// running counts, GroupRate, SlavesPresent and the synchronisation flags describe the streams that run
// on this card's clock, which may belong to other cards; the per-port flags describe this card's ports.
#pragma once

#include <type_traits>

#include "card/card_settings.h"

namespace kestvox {

inline constexpr unsigned PortCount = 2;  // 0 analog, 1 digital

struct CardRecord {
    DWORD Ordinal;  // number of the kernel device; the key of the table
    SharedCount AttachCount;
    SharedCount EnableCount;  // the card is listed and usable while this is not zero
    SharedCount OpenOutputs;  // streams whose clock master is this card
    SharedCount OpenInputs;
    SharedCount RunningOutputs;  // of those, started and not paused
    SharedCount RunningInputs;
    SharedWord GroupRate;          // Hz; 0 while no stream runs on this clock
    SharedWord ActiveClockSource;  // ClockSourceCode last programmed; 0 after a clock fault
    SharedWord InClockGroup;       // working flags of one clock programming run
    SharedWord ResyncPending;
    SharedWord SlavesPresent;   // other cards follow this card's clock
    SharedWord SyncStart;       // the current run starts its channels together
    SharedWord SyncWithOutput;  // ... inputs and outputs alike
    SharedWord InputOpen[PortCount];
    SharedWord InputRunning[PortCount];
    SharedWord InputResumePending[PortCount];
    SharedWord InputCounted[PortCount];      // the port is in its clock master's running count
    SharedWord InputClockMaster[PortCount];  // ... which is the card of that ordinal, while the port is open
    SharedWord OutputOpen[PortCount];
    SharedWord OutputRunning[PortCount];
    SharedWord OutputPaused[PortCount];
    SharedWord OutputResumePending[PortCount];
    SharedWord OutputCounted[PortCount];
    SharedWord OutputClockMaster[PortCount];
    WCHAR WorkingName[NameLength];  // working copies, edited by the configuration sheet
    SharedWord WorkingClockSource;
    SharedWord WorkingAdvancedMonitoring;
    MonitorBlock WorkingMonitor;  // its gain values are what the mixer is given
    DWORD PciRevision;            // 0 when it cannot be read
    char BoardRevisionLetter;     // '?' when the identity page cannot be read
    DWORD BoardRevision;
    DWORD FpgaRevision;
    DWORD FpgaVersionMajor;
    DWORD FpgaVersionMinor;
    DWORD FpgaVersionBuild;
    DWORD SerialNumber;
    WCHAR Name[NameLength];          // saved, as are the settings below
    WCHAR RegistryPath[PathLength];  // device key below HKEY_LOCAL_MACHINE; empty when unknown
    CardSettings Settings;
    SharedWord StartsWaiting;   // hold bits of directions with streams armed behind the start hold
    SharedWord WakeUpsWaiting;  // ... some of which have woken up
    SharedWord RunsBegun;       // ... in whose run every open stream has been started
    SharedCount WakingOutputs;  // streams on this clock that sleep and are to run afterwards
    SharedCount WakingInputs;
    SharedCount InitCount;  // how often the card was initialised after its discovery
    SharedWord ClockLost;   // it or a card that follows it was, since its group's clock was programmed
};
static_assert(std::is_standard_layout_v<CardRecord>);

// A gain of the working mixer settings, which the Monitor page may be changing at the same time.
inline DWORD WorkingGain(CardRecord& card, unsigned input) {
    return std::atomic_ref<DWORD>(card.WorkingMonitor.GainValue[input]).load(std::memory_order_relaxed);
}

}  // namespace kestvox
