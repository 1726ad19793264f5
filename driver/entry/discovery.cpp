#include "card/card_handle.h"
#include "card/card_table.h"
#include "entry/module.h"

namespace kestvox {

namespace {

bool CardExists(DWORD ordinal) {
    CardRecord probe = {};
    probe.Ordinal = ordinal;
    CardHandle* handle = nullptr;
    if (OpenCardHandle(probe, ControlChannel, &handle) != MMSYSERR_NOERROR) {
        return false;
    }
    CloseCardHandle(handle);
    return true;
}

}  // namespace

void EnumerateCards() {
    for (DWORD ordinal = 0; CardExists(ordinal); ++ordinal) {
        // Once for the input side and once for the output side.
        for (int side = 0; side < 2; ++side) {
            CardAttach(ordinal);
            CardEnable(ordinal);
        }
    }
}

}  // namespace kestvox
