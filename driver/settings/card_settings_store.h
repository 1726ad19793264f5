// A card's settings in the registry: values of the key "Config" below the card's device key.
// (LoadCardSettings, which runs once when a card's record is made, is declared in card/layers_above.h.)
#pragma once

#include "card/card_record.h"

namespace kestvox {

// Writes every setting of the card, replacing what is stored. A value that cannot be written is
// missing next time, and then its default holds. FALSE when the key cannot be determined.
BOOL SaveCardSettings(CardRecord& card);

// Tells the user, in one box, of the cards for which that has happened since it was told last.
void ShowUnsavedSettings();

// Tells the user, in a box for each, which cards' device keys could not be determined when their records were
// made; once. It comes back when the user has answered, so other programs must not be waiting for the caller.
void ShowUnreadSettings();

}  // namespace kestvox
