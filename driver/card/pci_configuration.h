// The part of a card's PCI configuration that a power-down of the card by another component loses.
#pragma once

#include "card/card_handle.h"

namespace kestvox {

struct PciConfiguration {
    DWORD DeviceIds;
    DWORD SubsystemIds;
    DWORD ClassAndRevision;
    DWORD BaseAddress;
    WORD Command;
    BYTE LatencyTimer;
    BYTE InterruptLine;
};

// FALSE at the first field that cannot be read.
BOOL SavePciConfiguration(CardHandle* handle, PciConfiguration* saved);

// Writes it back, when the card is the one that it was saved of. The card must answer to its address before
// it is switched on. FALSE at the first step that fails.
BOOL RestorePciConfiguration(CardHandle* handle, PciConfiguration* saved);

}  // namespace kestvox
