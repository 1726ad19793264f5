#include "card/card_handle.h"
#include "card/card_table.h"
#include "card/registers.h"
#include "clock/clock_run.h"
#include "eventlog/driver_event.h"

namespace kestvox {

namespace {

void ProgramFollowerRate(const ClockRun& run, CardRecord& card, CardHandle* handle) {
    card.ResyncPending = run.Changed;
    if (ProgramRate(handle, *run.Rate)) {
        card.ResyncPending = 1;
    }
}

void SwitchFollowerSource(CardRecord& card, CardHandle* handle) {
    TakeClockFault(handle);  // what the old source left
    const DWORD source = card.Settings.ClockSource;
    card.ActiveClockSource = source;
    if (WriteCardRegisterIfChanged(handle, card_register::ClockSelect, CardSpace, source, ClockSourceMask)) {
        card.ResyncPending = 1;
    }
}

MMRESULT ProgramFollower(const ClockRun& run, CardRecord& card) {
    BorrowedHandle handle(card);
    if (!handle) {
        return MMSYSERR_NODRIVER;
    }
    ProgramFollowerRate(run, card, handle.Get());
    SwitchFollowerSource(card, handle.Get());
    if (!ClockFailsAfterSwitch(handle.Get(), *run.Rate)) {
        return MMSYSERR_NOERROR;
    }
    card.ResyncPending = 1;
    SetInternalClock(handle.Get(), card);
    ReportDriverEvent(ClockSourceNotValid);
    return run.Checked ? MMSYSERR_ERROR : MMSYSERR_NOERROR;
}

}  // namespace

MMRESULT ProgramFollowers(ClockRun& run) {
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        if (card->InClockGroup == 0 || card == run.Master) {
            continue;
        }
        const MMRESULT result = ProgramFollower(run, *card);
        if (result != MMSYSERR_NOERROR && !(run.Resuming && result == MMSYSERR_NODRIVER)) {
            return result;
        }
    }
    return MMSYSERR_NOERROR;
}

}  // namespace kestvox
