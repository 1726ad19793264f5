#include "stream/synchronized_start.h"

#include <algorithm>

#include "card/locks.h"
#include "card/registers.h"
#include "stream/clock_group.h"

namespace kestvox {

namespace {

void DecideRun(const StreamInstance* stream, const Direction& direction, CardRecord& master) {
    const bool together =
        (stream->DirectMode != 0 || master.Settings.Punchin == 0) && master.*direction.OtherOpenCount != 0;
    master.SyncWithOutput = together;
    master.SyncStart = master.SlavesPresent != 0 || master.*direction.OpenCount >= 2 || together;
}

DWORD HoldBits(const Direction& direction, const CardRecord& master) {
    return master.SyncWithOutput != 0 ? OutputHold | InputHold : direction.HoldBit;
}

// The open streams that a run is about: those of the direction, and of the other one where both start
// together.
struct Participants {
    LONG Running;
    LONG Waking;   // asleep, to run afterwards
    LONG Stopped;  // neither
};

Participants CountParticipants(const Direction& direction, const CardRecord& master) {
    const auto count = [&master](auto open, auto running, auto waking) {
        const LONG started = master.*running + master.*waking;
        return Participants{master.*running, master.*waking, std::max<LONG>(master.*open - started, 0)};
    };
    Participants all = count(direction.OpenCount, direction.RunningCount, direction.WakingCount);
    if (master.SyncWithOutput != 0) {
        const Participants others =
            count(direction.OtherOpenCount, direction.OtherRunningCount, direction.OtherWakingCount);
        all.Running += others.Running;
        all.Waking += others.Waking;
        all.Stopped += others.Stopped;
    }
    return all;
}

bool SomebodyIsCounted(const CardRecord& master) {
    return master.RunningOutputs + master.RunningInputs + master.WakingOutputs + master.WakingInputs != 0;
}

// Before a stream is counted as started: when no other is, another run begins with it.
void ForgetEndedRun(const Direction& direction, CardRecord& master) {
    const Participants streams = CountParticipants(direction, master);
    if (streams.Running == 0 && streams.Waking == 0) {
        const LONG others = master.*direction.OtherRunningCount + master.*direction.OtherWakingCount;
        const DWORD kept = others == 0 ? 0 : ~HoldBits(direction, master);
        for (SharedWord* words : {&master.RunsBegun, &master.StartsWaiting, &master.WakeUpsWaiting}) {
            *words &= kept;
        }
    }
}

void CountWaking(StreamInstance* stream) {
    if (stream->ResumePending().exchange(1) == 0) {
        ++(stream->ClockMaster->*stream->Direction->WakingCount);
    }
}

// TRUE: the port was to run when it wakes up.
bool TakeBackStart(StreamInstance* stream) {
    const bool noted = stream->ResumePending().exchange(0) != 0;
    if (noted) {
        CountDown(stream->ClockMaster->*stream->Direction->WakingCount);
    }
    return noted;
}

// A start waits for every open stream. Those that wake up in a run that has begun wait for each other alone.
bool NobodyIsAwaited(const Direction& direction, const CardRecord& master) {
    const Participants streams = CountParticipants(direction, master);
    const bool goesOn = (master.RunsBegun & master.WakeUpsWaiting & HoldBits(direction, master)) != 0;
    return streams.Waking == 0 && (streams.Stopped == 0 || goesOn);
}

void NoteIfBegun(const Direction& direction, CardRecord& master) {
    if (CountParticipants(direction, master).Stopped == 0) {
        master.RunsBegun |= HoldBits(direction, master);
    }
}

// The hold is put back for those that join later.
void ReleaseHold(const Direction& direction, CardRecord& master) {
    const DWORD bits = HoldBits(direction, master);
    master.StartsWaiting &= ~bits;
    master.WakeUpsWaiting &= ~bits;
    ReleaseStartHold(master, bits);
    if (CountParticipants(direction, master).Stopped != 0) {
        SetStartHold(master, bits);
    }
}

// Nobody waits for the streams of a process that has died.
void ReleaseUnlessAwaiting(const Direction& direction, CardRecord& master) {
    const auto nobodyIsAwaited = [&] {
        NoteIfBegun(direction, master);
        return NobodyIsAwaited(direction, master);
    };
    if (nobodyIsAwaited() || (ForgetDeadStreams(master) && nobodyIsAwaited())) {
        ReleaseHold(direction, master);
    }
}

// Starts at once, also when an earlier run of the stream left its port waiting for the hold.
void ArmAlone(StreamInstance* stream) {
    if (stream->ArmBitSet.exchange(0) != 0) {
        WritePort(stream->Device, port_register::Control, 0, PortArm);
    }
    ArmChannel(stream->Device);
}

}  // namespace

void SynchronizedStart(StreamInstance* stream) {
    MutexLock starts(SequenceMutex);
    const Direction& direction = *stream->Direction;
    CardRecord& master = *stream->ClockMaster;
    const bool wakesUp = TakeBackStart(stream);
    if (SomebodyIsCounted(master)) {
        ForgetDeadStreams(master);
    }
    if (!wakesUp) {
        ForgetEndedRun(direction, master);
    }
    const LONG running = ++(master.*direction.RunningCount);
    stream->Counted() = 1;
    if (running == 1 && master.*direction.OtherRunningCount == 0) {
        DecideRun(stream, direction, master);
    }
    if (master.SyncStart == 0) {
        master.RunsBegun |= direction.HoldBit;
        ArmAlone(stream);
        return;
    }
    if (running == 1) {
        SetStartHold(master, direction.HoldBit);
    }
    stream->ArmBitSet = 1;
    WritePort(stream->Device, port_register::Control, PortArm, PortArm);
    ArmChannel(stream->Device);
    master.StartsWaiting |= direction.HoldBit;
    master.WakeUpsWaiting |= wakesUp ? direction.HoldBit : 0;
    ReleaseUnlessAwaiting(direction, master);
}

void NoteStart(StreamInstance* stream) {
    MutexLock starts(SequenceMutex);
    if (stream->ResumePending() == 0) {
        ForgetEndedRun(*stream->Direction, *stream->ClockMaster);
        CountWaking(stream);
    }
}

void ForgetStart(StreamInstance* stream) {
    MutexLock starts(SequenceMutex);
    if (TakeBackStart(stream)) {
        ReleaseWaitingStarts(*stream->Direction, *stream->ClockMaster);
    }
}

void ReleaseWaitingStarts(const Direction& direction, CardRecord& master) {
    MutexLock starts(SequenceMutex);
    const bool someoneWaits = (master.StartsWaiting & HoldBits(direction, master)) != 0;
    if (someoneWaits && CountParticipants(direction, master).Running != 0) {
        ReleaseUnlessAwaiting(direction, master);
    }
}

void SynchronizedStop(StreamInstance* stream, StopCause cause) {
    MutexLock starts(SequenceMutex);
    const Direction& direction = *stream->Direction;
    CardRecord& master = *stream->ClockMaster;
    if (stream->Counted().exchange(0) != 0) {  // not so when its transfer could not be started
        CountDown(master.*direction.RunningCount);
    }
    if (cause == StopCause::Sleep) {
        CountWaking(stream);
    }
    if (master.SyncStart != 0) {
        SetStartHold(master, HoldBits(direction, master));
    }
    DisarmChannel(stream->Device);
}

}  // namespace kestvox
