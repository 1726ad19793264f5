#include "stream/clock_group.h"

#include "card/card_table.h"
#include "card/clock_master.h"
#include "card/locks.h"
#include "stream/stream_list.h"

namespace kestvox {

namespace {

constexpr const Direction* BothDirections[] = {&InputDirection, &OutputDirection};

// A port that runs need not be counted: its program may have died before its transfer was started.
void StopPort(CardRecord& card, const Direction& direction, DWORD port, CardRecord& master) {
    (card.*direction.PortRunning)[port] = 0;
    if (direction.PortPaused != nullptr) {
        (card.*direction.PortPaused)[port] = 0;
    }
    if ((card.*direction.PortCounted)[port].exchange(0) != 0) {
        CountDown(master.*direction.RunningCount);
    }
    if ((card.*direction.PortResumePending)[port].exchange(0) != 0) {
        CountDown(master.*direction.WakingCount);
    }
}

// A port whose channel is this process's for the moment, so that nobody else opens it meanwhile.
void ForgetPort(CardRecord& card, const Direction& direction, DWORD port, CardRecord& master) {
    StopPort(card, direction, port, master);
    (card.*direction.PortOpen)[port] = 0;
    CountDown(master.*direction.OpenCount);
}

bool ForgetIfDead(CardRecord& card, const Direction& direction, DWORD port, CardRecord& master) {
    if ((card.*direction.PortOpen)[port] == 0 || IsOpenHere(card, direction, port)) {
        return false;
    }
    CardHandle* channel = nullptr;
    if (OpenCardHandle(card, direction.FirstChannel + port, &channel) != MMSYSERR_NOERROR) {
        return false;
    }
    const bool dead = (card.*direction.PortOpen)[port] != 0;  // else it was closed just now
    if (dead) {
        ForgetPort(card, direction, port, master);
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
    const Direction& direction = *stream->Direction;
    SharedWord& open = stream->PortFlag(direction.PortOpen);
    if (open != 0) {
        ForgetPort(*stream->Card, direction, stream->Port, *stream->ClockMaster);
    }
    // A pause may have met the last stream in its close.
    StopPort(*stream->Card, direction, stream->Port, *stream->ClockMaster);
    open = 1;
    ++(stream->ClockMaster->*direction.OpenCount);
}

void CountClosed(StreamInstance* stream) {
    if (stream->PortFlag(stream->Direction->PortOpen).exchange(0) != 0) {
        CountDown(stream->ClockMaster->*stream->Direction->OpenCount);
    }
}

BOOL ForgetDeadStreams(CardRecord& master) {
    bool any = false;
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        if (&ClockMasterOf(*card) != &master) {
            continue;
        }
        for (const Direction* direction : BothDirections) {
            for (DWORD port = 0; port < PortCount; ++port) {
                any = ForgetIfDead(*card, *direction, port, master) || any;
            }
        }
    }
    return any;
}

void ForgetIdleClock(CardRecord& master) {
    DriverLock lock;
    if (master.OpenOutputs == 0 && master.OpenInputs == 0) {
        master.RunningOutputs = 0;
        master.RunningInputs = 0;
        master.GroupRate = 0;
        master.SyncStart = 0;
        master.SyncWithOutput = 0;
        master.StartsWaiting = 0;
        master.RunsBegun = 0;
        master.WakingOutputs = 0;
        master.WakingInputs = 0;
    }
}

}  // namespace kestvox
