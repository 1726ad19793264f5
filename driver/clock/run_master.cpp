#include <iterator>

#include "card/card_handle.h"
#include "card/registers.h"
#include "clock/clock_run.h"
#include "eventlog/driver_event.h"

namespace kestvox {

namespace {

constexpr DWORD ReceiverSettle = 50000;  // microseconds
constexpr DWORD LockPeriods = 10;

// Automatic: a lone digital recording takes the clock of what it records.
DWORD ChooseMasterSource(const ClockRun& run) {
    const CardRecord& master = *run.Master;
    if (master.Settings.ClockSource != AutomaticClock) {
        return master.Settings.ClockSource;
    }
    const bool loneDigitalInput =
        !run.Slaves && run.Stream->Port == 1 && master.OpenInputs == 1 && master.OpenOutputs == 0;
    return loneDigitalInput ? DigitalInputClock : InternalClock;
}

// In two steps: the receiver settles before its clock is used.
void SwitchReceiverOn(CardHandle* handle) {
    WriteCard(handle, card_register::DigitalReceiver, 0, ReceiverOff);
    DelayMicroseconds(handle, ReceiverSettle);
    WriteCard(handle, card_register::DigitalReceiver, 0, ReceiverClockOff);
}

// The selected clock is not valid: the card goes back to its own.
void AbandonMasterSource(ClockRun& run, CardHandle* handle) {
    run.Changed = true;
    run.DigitalInput = false;
    SwitchReceiverOff(handle);
    SetInternalClock(handle, *run.Master);
    ReportDriverEvent(ClockSourceNotValid);
}

}  // namespace

BOOL ProgramRate(CardHandle* handle, const CardRate& rate) {
    static_assert(std::size(CardRates) <= RateCodeMask + 1);
    const BOOL changed =
        WriteCardRegisterIfChanged(handle, card_register::ClockSelect, CardSpace, rate.Code, RateCodeMask);
    WriteCard(handle, card_register::ClockControl, rate.DoubleSpeed ? DoubleSpeed : 0, DoubleSpeed);
    return changed;
}

void SetInternalClock(CardHandle* handle, CardRecord& card) {
    card.ActiveClockSource = InternalClock;
    WriteCard(handle, card_register::ClockSelect, 0, ClockSourceMask);
}

void SwitchReceiverOff(CardHandle* handle) {
    WriteCard(handle, card_register::DigitalReceiver, ReceiverClockOff, ReceiverClockOff);
    WriteCard(handle, card_register::DigitalReceiver, ReceiverOff, ReceiverOff);
}

BOOL ClockFailsAfterSwitch(CardHandle* handle, const CardRate& rate) {
    DelayMicroseconds(handle, PeriodsToMicroseconds(LockPeriods, rate.Hz));
    return TakeClockFault(handle);
}

void WaitPeriods(const ClockRun& run, DWORD periods) {
    DelayMicroseconds(run.Stream->Device, PeriodsToMicroseconds(periods, run.Rate->Hz));
}

MMRESULT ProgramMasterRate(ClockRun& run) {
    BorrowedHandle handle(*run.Master);
    if (!handle) {
        return MMSYSERR_NODRIVER;
    }
    if (ProgramRate(handle.Get(), *run.Rate)) {
        run.Changed = true;
    }
    return MMSYSERR_NOERROR;
}

MMRESULT SwitchMasterSource(ClockRun& run) {
    CardRecord& master = *run.Master;
    const DWORD source = ChooseMasterSource(run);
    BorrowedHandle borrowed(master);
    if (!borrowed) {
        return MMSYSERR_NODRIVER;
    }
    CardHandle* handle = borrowed.Get();
    run.DigitalInput = source == DigitalInputClock;
    if (run.DigitalInput) {
        SwitchReceiverOn(handle);
    } else {
        SwitchReceiverOff(handle);
    }
    TakeClockFault(handle);  // what the old source left
    master.ActiveClockSource = source;
    if (WriteCardRegisterIfChanged(handle, card_register::ClockSelect, CardSpace, source, ClockSourceMask)) {
        run.Changed = true;
    }
    if (!ClockFailsAfterSwitch(handle, *run.Rate)) {
        return MMSYSERR_NOERROR;
    }
    AbandonMasterSource(run, handle);
    return run.Checked ? MMSYSERR_ERROR : MMSYSERR_NOERROR;
}

MMRESULT CheckIncomingRate(ClockRun& run) {
    if (!run.DigitalInput || !run.Checked) {
        return MMSYSERR_NOERROR;
    }
    BorrowedHandle handle(*run.Master);
    if (!handle) {
        return MMSYSERR_NODRIVER;
    }
    const RateMeter meter = {CardSpace, card_register::DigitalReceiver, card_register::MeasuredRate};
    if (MeasuredRateMatches(handle.Get(), meter, *run.Rate)) {
        return MMSYSERR_NOERROR;
    }
    ReportDriverEvent(MasterClockRateMismatch);
    return MMSYSERR_ERROR;
}

MMRESULT FinishMaster(ClockRun& run) {
    if (run.Changed) {
        run.Master->ResyncPending = 1;
    }
    if (!run.Slaves) {
        return MMSYSERR_NOERROR;
    }
    BorrowedHandle handle(*run.Master);
    if (!handle) {
        return MMSYSERR_NODRIVER;
    }
    WriteCard(handle.Get(), card_register::ClockSelect, DriveLink, DriveLink);
    return MMSYSERR_NOERROR;
}

}  // namespace kestvox
