#include "stream/clock_group.h"

#include "card/card_table.h"
#include "card/locks.h"
#include "stream/stream_list.h"

namespace kestvox {

namespace {

constexpr const Direction* BothDirections[] = {&InputDirection, &OutputDirection};

// Takes the port out of a count of the clock that it was opened on: its card may have another master by now.
void LeaveCount(CardRecord& card, const Direction& direction, DWORD port, SharedCount CardRecord::*count) {
    if (CardRecord* master = FindCard((card.*direction.PortClockMaster)[port]); master != nullptr) {
        CountDown(master->*count);
    }
}

// A port that runs need not be counted: its program may have died before its transfer was started.
void StopPort(CardRecord& card, const Direction& direction, DWORD port) {
    (card.*direction.PortRunning)[port] = 0;
    if (direction.PortPaused != nullptr) {
        (card.*direction.PortPaused)[port] = 0;
    }
    if ((card.*direction.PortCounted)[port].exchange(0) != 0) {
        LeaveCount(card, direction, port, direction.RunningCount);
    }
    if ((card.*direction.PortResumePending)[port].exchange(0) != 0) {
        LeaveCount(card, direction, port, direction.WakingCount);
    }
}

// A port whose channel is this process's for the moment, so that nobody else opens it meanwhile.
void ForgetPort(CardRecord& card, const Direction& direction, DWORD port) {
    StopPort(card, direction, port);
    (card.*direction.PortOpen)[port] = 0;
    LeaveCount(card, direction, port, direction.OpenCount);
}

bool ForgetIfDead(CardRecord& card, const Direction& direction, DWORD port) {
    if ((card.*direction.PortOpen)[port] == 0 || IsOpenHere(card, direction, port)) {
        return false;
    }
    CardHandle* channel = nullptr;
    if (OpenCardHandle(card, direction.FirstChannel + port, &channel) != MMSYSERR_NOERROR) {
        return false;
    }
    const bool dead = (card.*direction.PortOpen)[port] != 0;  // else it was closed just now
    if (dead) {
        ForgetPort(card, direction, port);
    }
    CloseCardHandle(channel);
    return dead;
}

}  // namespace

void CountDown(SharedCount& count) {
    LONG now = count;
    while (now > 0 && !count.compare_exchange_weak(now, now - 1)) {
    }
}

void CountOpen(StreamInstance* stream) {
    MutexLock starts(SequenceMutex);
    const Direction& direction = *stream->Direction;
    SharedWord& open = stream->PortFlag(direction.PortOpen);
    if (open != 0) {
        ForgetPort(*stream->Card, direction, stream->Port);
    }
    // A pause may have met the last stream in its close.
    StopPort(*stream->Card, direction, stream->Port);
    stream->PortFlag(direction.PortClockMaster) = stream->ClockMaster->Ordinal;
    open = 1;
    ++(stream->ClockMaster->*direction.OpenCount);
}

void CountClosed(StreamInstance* stream) {
    if (stream->PortFlag(stream->Direction->PortOpen).exchange(0) != 0) {
        CountDown(stream->ClockMaster->*stream->Direction->OpenCount);
    }
}

BOOL ForgetDeadStreams(CardRecord& master) {
    MutexLock starts(SequenceMutex);  // so that nobody is refused a channel that is being looked at
    bool any = false;
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        for (const Direction* direction : BothDirections) {
            for (DWORD port = 0; port < PortCount; ++port) {
                const bool onClock = (card->*direction->PortClockMaster)[port] == master.Ordinal;
                any = (onClock && ForgetIfDead(*card, *direction, port)) || any;
            }
        }
    }
    return any;
}

void ForgetIdleClock(CardRecord& master) {
    DriverLock lock;
    MutexLock starts(SequenceMutex);
    if (master.OpenOutputs == 0 && master.OpenInputs == 0) {
        ForgetClock(master);
    }
}

}  // namespace kestvox
