// The cards of the machine, the same list for every process that has the library loaded.
//
// Records are appended at discovery (and when an open refers to a clock master) and never removed or
// moved, so a pointer to one stays good as long as the library is loaded. No lock is taken here, but for what
// initialises or resets cards.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include "card/card_record.h"

namespace kestvox {

inline constexpr DWORD MaxCards = 16;
inline constexpr DWORD NoCard = 0xFFFFFFFF;

// Null for an ordinal that no record has, NoCard among them.
CardRecord* FindCard(DWORD ordinal);

// All records in table order; null at the end.
CardRecord* FirstCard();
CardRecord* NextCard(CardRecord* card);

// Ordinal of the first card with exactly that device key; NoCard when there is none. An empty path finds no
// card, also not one whose own key is unknown and therefore empty.
DWORD FindCardByRegistryPath(const WCHAR* path);

// Takes a reference, making the record (identity and settings are read then) when there is none.
// MMSYSERR_NOMEM when the table is full.
MMRESULT CardAttach(DWORD ordinal);

// Gives a reference back. MMSYSERR_INVALHANDLE without a record; MMSYSERR_ALLOCATED when it was the
// last one of an enabled card. Nothing is freed either way.
MMRESULT CardDetach(DWORD ordinal);

// Counts the card enabled; the first time of all its hardware is initialised.
// MMSYSERR_INVALHANDLE without a record, MMSYSERR_NODRIVER when its device cannot be opened.
MMRESULT CardEnable(DWORD ordinal);

// The rate of the card's clock, and the run of the streams on it, when none is left. Under SequenceMutex.
void ForgetClock(CardRecord& master);

// Soft-resets the kernel driver's state of every card and forgets every run state. Streams and handles
// that applications hold are left as they are.
void SoftResetCards();

// A discovery that its process did not live to finish: its records are forgotten, so that the next one starts
// from an empty table. Only before FirstLoadDone, under the discovery's mutex.
void ForgetCards();

// Whether a process of the machine has made the first-load discovery.
bool FirstLoadDone();
void SetFirstLoadDone();

}  // namespace kestvox
