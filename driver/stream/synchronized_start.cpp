#include "stream/synchronized_start.h"

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

// Every open stream that takes part in the run.
bool EveryoneHasStarted(const Direction& direction, const CardRecord& master) {
    if (master.*direction.OpenCount > master.*direction.RunningCount) {
        return false;
    }
    return master.SyncWithOutput == 0 ||
           master.*direction.OtherRunningCount >= master.*direction.OtherOpenCount;
}

// Nobody waits for the streams of a process that has died.
bool EveryoneAliveHasStarted(const Direction& direction, CardRecord& master) {
    return EveryoneHasStarted(direction, master) ||
           (ForgetDeadStreams(master) && EveryoneHasStarted(direction, master));
}

void ReleaseHold(const Direction& direction, CardRecord& master) {
    const DWORD bits = HoldBits(direction, master);
    master.StartsWaiting &= ~bits;
    ReleaseStartHold(master, bits);
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
    stream->CountedRunning = 1;
    const LONG running = ++(master.*direction.RunningCount);
    if (running == 1 && master.*direction.OtherRunningCount == 0) {
        DecideRun(stream, direction, master);
    }
    if (master.SyncStart == 0) {
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
    if (EveryoneAliveHasStarted(direction, master)) {
        ReleaseHold(direction, master);
    }
}

void ReleaseWaitingStarts(const Direction& direction, CardRecord& master) {
    MutexLock starts(SequenceMutex);
    const bool someoneRuns = master.*direction.RunningCount > 0 ||
                             (master.SyncWithOutput != 0 && master.*direction.OtherRunningCount > 0);
    if ((master.StartsWaiting & HoldBits(direction, master)) != 0 && someoneRuns &&
        EveryoneAliveHasStarted(direction, master)) {
        ReleaseHold(direction, master);
    }
}

void SynchronizedStop(StreamInstance* stream) {
    MutexLock starts(SequenceMutex);
    const Direction& direction = *stream->Direction;
    CardRecord& master = *stream->ClockMaster;
    if (stream->CountedRunning.exchange(0) != 0) {  // not so when its transfer could not be started
        CountDown(master.*direction.RunningCount);
    }
    if (master.SyncStart != 0) {
        SetStartHold(master, HoldBits(direction, master));
    }
    DisarmChannel(stream->Device);
}

}  // namespace kestvox
