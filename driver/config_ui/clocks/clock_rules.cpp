#include "config_ui/clocks/clock_rules.h"

#include "card/card_table.h"
#include "card/layers_above.h"
#include "config_ui/property_page.h"
#include "config_ui/resource.h"
#include "stream/stream_instance.h"

namespace kestvox {

namespace {

bool StreamsInDirectMode(const CardRecord& card) {
    const StreamLoan loan = FindStreamByCard(card);
    if (loan.Lender == nullptr) {
        return false;
    }
    const bool direct = loan.Lender->DirectMode != 0;
    ReturnLoan(loan);
    return direct;
}

bool IsClockIdle(const CardRecord& card) {
    return card.GroupRate == 0 || StreamsInDirectMode(card);
}

bool AreAllClocksIdle() {
    CardRecord* card = FirstCard();
    while (card != nullptr && IsClockIdle(*card)) {
        card = NextCard(card);
    }
    return card == nullptr;
}

}  // namespace

BOOL MayChangeClocks(HWND page, const CardRecord* card) {
    if (card != nullptr ? IsClockIdle(*card) : AreAllClocksIdle()) {
        return TRUE;
    }
    ShowRefusal(page, IDS_CLOCK_IN_USE);
    return FALSE;
}

}  // namespace kestvox
