#include "card/card_table.h"

#include <new>

#include "card/card_handle.h"
#include "card/card_identity.h"
#include "card/init_card.h"
#include "card/layers_above.h"
#include "card/locks.h"
#include "card/requests.h"
#include "card/shared_section.h"

namespace kestvox {

namespace {

// A whole number of pages, so that nothing else shares them.
struct alignas(4096) SharedData {
    CardRecord Cards[MaxCards];
    SharedWord CardCount;
    SharedWord FirstLoadDone;
};

SHARED_SECTION constinit SharedData Shared = {};

constexpr DWORD PciRevisionOffset = 8;

void ReadHardware(CardRecord& card) {
    CardHandle* handle = nullptr;
    if (OpenCardHandle(card, ControlChannel, &handle) != MMSYSERR_NOERROR) {
        return;
    }
    BYTE revision = 0;
    card.PciRevision = ReadPciConfig(handle, PciRevisionOffset, &revision, 1) ? revision : 0;
    ReadCardIdentity(handle, card);
    CloseCardHandle(handle);
}

void ForgetRunState(CardRecord& card) {
    for (unsigned port = 0; port < PortCount; ++port) {
        card.InputOpen[port] = 0;
        card.InputRunning[port] = 0;
        card.InputResumePending[port] = 0;
        card.InputCounted[port] = 0;
        card.OutputOpen[port] = 0;
        card.OutputRunning[port] = 0;
        card.OutputPaused[port] = 0;
        card.OutputResumePending[port] = 0;
        card.OutputCounted[port] = 0;
    }
    card.OpenInputs = 0;
    card.OpenOutputs = 0;
    ForgetClock(card);
}

}  // namespace

CardRecord* FindCard(DWORD ordinal) {
    if (ordinal == NoCard) {
        return nullptr;
    }
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        if (card->Ordinal == ordinal) {
            return card;
        }
    }
    return nullptr;
}

CardRecord* FirstCard() {
    return Shared.CardCount != 0 ? &Shared.Cards[0] : nullptr;
}

CardRecord* NextCard(CardRecord* card) {
    if (card == nullptr) {
        return nullptr;
    }
    CardRecord* next = card + 1;
    return next < &Shared.Cards[Shared.CardCount] ? next : nullptr;
}

DWORD FindCardByRegistryPath(const WCHAR* path) {
    if (path[0] == 0) {
        return NoCard;
    }
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        if (lstrcmpW(card->RegistryPath, path) == 0) {
            return card->Ordinal;
        }
    }
    return NoCard;
}

MMRESULT CardAttach(DWORD ordinal) {
    if (CardRecord* known = FindCard(ordinal)) {
        ++known->AttachCount;
        return MMSYSERR_NOERROR;
    }
    if (Shared.CardCount >= MaxCards) {
        return MMSYSERR_NOMEM;
    }
    CardRecord& card = Shared.Cards[Shared.CardCount];
    card.Ordinal = ordinal;
    card.AttachCount = 1;
    ++Shared.CardCount;
    ReadHardware(card);
    LoadCardSettings(card);
    return MMSYSERR_NOERROR;
}

MMRESULT CardDetach(DWORD ordinal) {
    CardRecord* card = FindCard(ordinal);
    if (card == nullptr) {
        return MMSYSERR_INVALHANDLE;
    }
    const LONG left = --card->AttachCount;
    return left == 0 && card->EnableCount != 0 ? MMSYSERR_ALLOCATED : MMSYSERR_NOERROR;
}

MMRESULT CardEnable(DWORD ordinal) {
    CardRecord* card = FindCard(ordinal);
    if (card == nullptr) {
        return MMSYSERR_INVALHANDLE;
    }
    if (card->EnableCount == 0) {
        CardHandle* handle = nullptr;
        if (OpenCardHandle(*card, ControlChannel, &handle) != MMSYSERR_NOERROR) {
            return MMSYSERR_NODRIVER;
        }
        InitCard(handle, *card);
        CloseCardHandle(handle);
    }
    ++card->EnableCount;
    return MMSYSERR_NOERROR;
}

void ForgetClock(CardRecord& master) {
    master.RunningInputs = 0;
    master.RunningOutputs = 0;
    master.WakingInputs = 0;
    master.WakingOutputs = 0;
    master.GroupRate = 0;
    master.SyncStart = 0;
    master.SyncWithOutput = 0;
    master.StartsWaiting = 0;
    master.WakeUpsWaiting = 0;
    master.RunsBegun = 0;
}

void SoftResetCards() {
    MutexLock clocks(ClockMutex);
    MutexLock starts(SequenceMutex);
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        CardHandle* handle = nullptr;
        if (OpenCardHandle(*card, ControlChannel, &handle) == MMSYSERR_NOERROR) {
            SoftReset(handle);
            CloseCardHandle(handle);
        }
        ForgetRunState(*card);
    }
}

void ForgetCards() {
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        new (card) CardRecord();
    }
    Shared.CardCount = 0;
}

bool FirstLoadDone() {
    return Shared.FirstLoadDone != 0;
}

void SetFirstLoadDone() {
    Shared.FirstLoadDone = 1;
}

}  // namespace kestvox
