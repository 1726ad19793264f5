#include "entry/power.h"

#include "card/card_handle.h"
#include "card/card_table.h"
#include "card/clock_master.h"
#include "card/locks.h"
#include "card/registers.h"
#include "entry/module.h"
#include "stream/service_thread.h"
#include "stream/stream_list.h"

namespace kestvox {

namespace {

// What this process saw at its suspend: how often each card had been initialised.
std::atomic<bool> Suspended = false;
SharedCount InitCounts[MaxCards];

// An initialised card keeps its clock mode; one that has lost its power does not have it.
bool KeptItsState(CardHandle* handle) {
    DWORD clock = 0;
    return ReadCardRegister(handle, card_register::ClockControl, CardSpace, &clock) &&
           (clock & ClockModeMask) == NormalClockMode;
}

bool IsAwake(CardHandle* handle, const CardRecord& card, Wake wake) {
    if (Suspended) {
        return card.InitCount != InitCounts[card.Ordinal];
    }
    return wake == Wake::Critical && KeptItsState(handle);
}

void BringBack(CardRecord& card, Wake wake) {
    BorrowedHandle handle(card);
    if (handle && !IsAwake(handle.Get(), card, wake)) {
        InitCardAgain(handle.Get(), card);
    }
}

void BringBackCards(Wake wake) {
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        if (card->EnableCount > 0) {
            BringBack(*card, wake);
        }
    }
}

}  // namespace

void SuspendDriver() {
    const LibraryUse library;
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        InitCounts[card->Ordinal] = card->InitCount.load();
    }
    Suspended = true;
    SuspendStreams();
}

void ResumeDriver(Wake wake) {
    HANDLE oneAtATime = CreateSharedMutex(DiscoveryMutexName);
    {
        // One process after the other, so that each sees what the one before has done to cards and clocks. A
        // client that resumes from inside its callback holds what the one before may be waiting for.
        MutexLock turn(oneAtATime, OnServiceThread() ? 0 : INFINITE);
        BringBackCards(wake);
        Suspended = false;
        ResumeStreams();
    }
    if (oneAtATime != nullptr) {
        CloseHandle(oneAtATime);
    }
}

}  // namespace kestvox
