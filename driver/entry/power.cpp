#include "entry/power.h"

#include "card/card_handle.h"
#include "card/card_table.h"
#include "card/init_card.h"
#include "stream/stream_list.h"

namespace kestvox {

void SuspendDriver() {
    SuspendStreams();
}

void ResumeDriver() {
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        if (card->EnableCount <= 0) {
            continue;
        }
        BorrowedHandle handle(*card);
        if (handle) {
            InitCard(handle.Get(), *card);
            // The card is back at its initial clock: the first stream that is prepared has to program it.
            card->GroupRate = 0;
        }
    }
    ResumeStreams();
}

}  // namespace kestvox
