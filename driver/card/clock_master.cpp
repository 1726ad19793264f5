#include "card/clock_master.h"

#include "card/card_table.h"
#include "card/init_card.h"
#include "card/locks.h"

namespace kestvox {

namespace {

void SetClockSource(CardRecord& card, ClockSourceCode source) {
    card.Settings.ClockSource = source;
    card.WorkingClockSource = source;
}

}  // namespace

CardRecord& ClockMasterOf(CardRecord& card) {
    CardRecord* master = FindCard(FindCardByRegistryPath(card.Settings.Master));
    const bool leads = master != nullptr && master->EnableCount != 0 &&
                       FindCardByRegistryPath(master->Settings.Master) == NoCard;
    return leads ? *master : card;
}

CardRecord& ResolveClockMaster(CardRecord& card) {
    CardRecord& master = ClockMasterOf(card);
    if (&master != &card) {
        SetClockSource(card, LinkClock);
    } else if (card.Settings.ClockSource == LinkClock) {
        SetClockSource(card, AutomaticClock);
    }
    return master;
}

void InitCardAgain(CardHandle* handle, CardRecord& card) {
    MutexLock clock(ClockMutex);
    card.ClockLost = 1;
    ClockMasterOf(card).ClockLost = 1;
    InitCard(handle, card);
    ++card.InitCount;
}

}  // namespace kestvox
