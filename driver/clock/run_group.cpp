#include "card/card_handle.h"
#include "card/card_table.h"
#include "card/channel_status.h"
#include "card/registers.h"
#include "clock/clock_run.h"

namespace kestvox {

namespace {

constexpr DWORD PortPulse = 1000;  // microseconds
constexpr DWORD ResyncSettlePeriods = 4100;
constexpr DWORD ResyncSettle = 450000;  // microseconds, after those
constexpr DWORD PlainSettlePeriods = 28;

bool FollowsMaster(const CardRecord& card, const CardRecord& master) {
    return FindCardByRegistryPath(card.Settings.Master) == master.Ordinal;
}

bool TakesPart(const CardRecord& card) {
    return card.InClockGroup != 0 || card.ResyncPending != 0;
}

void MarkCard(ClockRun& run, CardRecord& card) {
    card.ResyncPending = 0;
    card.InClockGroup = 0;
    if (&card == run.Stream->Card || &card == run.Master || FollowsMaster(card, *run.Master)) {
        card.InClockGroup = 1;
        run.Slaves = run.Slaves || &card != run.Master;
    } else if (card.ActiveClockSource == LinkClock) {
        card.ResyncPending = 1;  // it hangs on a link that this run may change
    }
}

bool DrivesLink(CardHandle* handle) {
    DWORD clock = 0;
    return ReadCardRegister(handle, card_register::ClockSelect, CardSpace, &clock) &&
           (clock & DriveLink) != 0;
}

// Takes the link off every card but the master. Whether who drives it changes: then every card of the
// group has to resynchronise.
bool LinkChanges(const ClockRun& run, const CardRecord& card, CardHandle* handle) {
    if (&card == run.Master) {
        return !DrivesLink(handle);
    }
    return WriteCardRegisterIfChanged(handle, card_register::ClockSelect, CardSpace, 0, DriveLink);
}

void PulsePort(StreamInstance* stream) {
    WritePort(stream->Device, port_register::Control, PortResync, PortResync);
    DelayMicroseconds(stream->Device, PortPulse);
    WritePort(stream->Device, port_register::Control, 0, PortResync);
}

void PulseResync(CardHandle* handle) {
    WriteCard(handle, card_register::ClockControl, 0, Resync);
    DelayMicroseconds(handle, 1);
    WriteCard(handle, card_register::ClockControl, Resync, Resync);
}

// Calls `action` with each card that `takesPart` and a handle to it. Ends at a card without a handle, but for
// a resume.
template <typename Predicate, typename Action>
MMRESULT ForEachCard(const ClockRun& run, Predicate takesPart, Action action) {
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        if (!takesPart(*card)) {
            continue;
        }
        BorrowedHandle handle(*card);
        if (handle) {
            action(*card, handle.Get());
        } else if (!run.Resuming) {
            return MMSYSERR_NODRIVER;
        }
    }
    return MMSYSERR_NOERROR;
}

}  // namespace

MMRESULT MarkGroup(ClockRun& run) {
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        MarkCard(run, *card);
    }
    const MMRESULT result = ForEachCard(run, TakesPart, [](CardRecord&, CardHandle* handle) {
        WriteCard(handle, card_register::ClockControl, ClockHold, ClockHold);
    });
    if (result == MMSYSERR_NOERROR) {
        run.Master->SlavesPresent = run.Slaves;
    }
    return result;
}

// Only the master may drive the link.
MMRESULT SettleLink(ClockRun& run) {
    if (!run.Slaves) {
        return MMSYSERR_NOERROR;
    }
    const auto everyCard = [](const CardRecord&) { return true; };
    return ForEachCard(run, everyCard, [&run](CardRecord& card, CardHandle* handle) {
        if (LinkChanges(run, card, handle)) {
            run.Changed = true;
        }
        if (card.ResyncPending != 0) {
            SetInternalClock(handle, card);
        }
    });
}

// Puts cards of the group on their internal clocks before the master's clock changes: all of them, the master
// among them, when anything has changed; else those followers that are on another clock than the link.
MMRESULT LeaveOldClocks(ClockRun& run) {
    if (!run.Slaves) {
        return MMSYSERR_NOERROR;
    }
    return ForEachCard(
        run,
        [&run](CardRecord& card) {
            const bool follows = card.ActiveClockSource == LinkClock;
            return card.InClockGroup != 0 && (run.Changed || (&card != run.Master && !follows));
        },
        [&run](CardRecord& card, CardHandle* handle) {
            SetInternalClock(handle, card);
            if (&card != run.Master) {
                SwitchReceiverOff(handle);
            }
        });
}

MMRESULT ResynchroniseCards(ClockRun& run) {
    bool resynchronised = false;
    const MMRESULT result = ForEachCard(run, TakesPart, [&](CardRecord& card, CardHandle* handle) {
        if (card.ResyncPending != 0) {
            resynchronised = true;
            PulsePort(run.Stream);
            PulseResync(handle);
        }
        if (card.InClockGroup != 0) {
            SetChannelStatusRate(handle, card, *run.Rate);
        }
    });
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    if (resynchronised) {
        WaitPeriods(run, ResyncSettlePeriods);
        DelayMicroseconds(run.Stream->Device, ResyncSettle);
    } else {
        WaitPeriods(run, PlainSettlePeriods);
    }
    return MMSYSERR_NOERROR;
}

MMRESULT ReleaseCards(ClockRun& run) {
    return ForEachCard(run, TakesPart, [](CardRecord& card, CardHandle* handle) {
        WriteCard(handle, card_register::ClockControl, 0, ClockHold);
        card.ResyncPending = 0;
        card.InClockGroup = 0;
    });
}

}  // namespace kestvox
