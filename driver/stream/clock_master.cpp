#include "stream/clock_master.h"

#include "card/card_table.h"

namespace kestvox {

namespace {

void SetClockSource(CardRecord& card, ClockSourceCode source) {
    card.Settings.ClockSource = source;
    card.WorkingClockSource = source;
}

}  // namespace

CardRecord& ResolveClockMaster(CardRecord& card) {
    CardRecord* master = FindCard(FindCardByRegistryPath(card.Settings.Master));
    if (master != nullptr && master->EnableCount != 0 &&
        FindCardByRegistryPath(master->Settings.Master) == NoCard) {
        SetClockSource(card, LinkClock);
        return *master;
    }
    if (card.Settings.ClockSource == LinkClock) {
        SetClockSource(card, AutomaticClock);
    }
    return card;
}

}  // namespace kestvox
