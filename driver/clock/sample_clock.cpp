#include "clock/sample_clock.h"

#include "card/locks.h"
#include "card/registers.h"
#include "clock/clock_run.h"
#include "stream/stream_control.h"

namespace kestvox {

namespace {

using ClockStep = MMRESULT (*)(ClockRun& run);

// In sample periods: what the group needs to come to rest, before and after it is programmed.
constexpr DWORD SettlePeriods = 1052;

MMRESULT Settle(ClockRun& run) {
    WaitPeriods(run, SettlePeriods);
    return MMSYSERR_NOERROR;
}

constexpr ClockStep FullRun[] = {
    MarkGroup,           // and hold the clocks of its cards
    Settle,              // until they have stopped
    SettleLink,          // with followers only: nobody but the master may drive the link
    LeaveOldClocks,      // with followers only: the internal clock bridges the change
    ProgramMasterRate,   // rate code and double speed
    SwitchMasterSource,  // and back to the internal clock when the chosen one is not valid
    CheckIncomingRate,   // when the master runs on its digital input
    FinishMaster,        // with followers it drives the link
    ProgramFollowers,    // rate, then source, card by card
    ResynchroniseCards,  // with a long wait when a clock has changed
    ReleaseCards,        // end of the hold
    Settle,              // until they run
};

// A stream that was closed meanwhile leaves no rate behind: nobody may be on the clock any more, or others
// may be waiting to program theirs. One that is closed later gives the clock up itself.
void NoteRate(const ClockRun& run) {
    MutexLock starts(SequenceMutex);
    const bool closed = run.Stream->Closing != 0;
    if (!closed) {
        run.Master->GroupRate = run.Rate->Hz;
    }
    run.Master->ClockLost = closed;
}

MMRESULT ProgramGroup(StreamInstance* stream, bool ignoreClockError) {
    ClockRun run = {};
    run.Stream = stream;
    run.Master = stream->ClockMaster;
    run.Rate = &CardRateOfCode(stream->Format.RateCode);
    run.Resuming = ignoreClockError;
    run.Checked = !ignoreClockError && run.Master->Settings.CheckClocks != 0;
    for (const ClockStep step : FullRun) {
        const MMRESULT result = step(run);
        if (result != MMSYSERR_NOERROR && !(run.Resuming && result == MMSYSERR_NODRIVER)) {
            return result;
        }
    }
    NoteRate(run);
    return MMSYSERR_NOERROR;
}

// A stream that opens may find that another one has opened meanwhile, at another rate.
MMRESULT BringGroupToRate(StreamInstance* stream, bool ignoreClockError) {
    MutexLock oneAtATime(ClockMutex);
    if (stream->Closing != 0) {
        return MMSYSERR_INVALHANDLE;
    }
    const CardRecord& master = *stream->ClockMaster;
    const bool runs = master.GroupRate != 0;
    const bool atItsRate = master.GroupRate == stream->Format.SampleRate;
    if (runs && !atItsRate && !ignoreClockError) {
        return WAVERR_BADFORMAT;
    }
    return atItsRate && master.ClockLost == 0 ? MMSYSERR_NOERROR : ProgramGroup(stream, ignoreClockError);
}

// Under the stream's control, so that its direct mode is not lost.
void ProgramPort(StreamInstance* stream) {
    ControlLock control(stream);
    const DWORD format = static_cast<DWORD>(stream->SampleFormat()) << PortFormatShift;
    WritePort(stream->Device, port_register::Control, format, PortFormatMask);
    WritePort(stream->Device, port_register::Control, stream->Format.Channels == 1 ? PortMono : 0, PortMono);
}

}  // namespace

MMRESULT ProgramSampleClock(StreamInstance* stream, bool ignoreClockError) {
    const MMRESULT result = BringGroupToRate(stream, ignoreClockError);
    if (result == MMSYSERR_NOERROR) {
        ProgramPort(stream);
    }
    return result;
}

}  // namespace kestvox
