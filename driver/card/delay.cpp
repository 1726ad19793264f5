#include "card/delay.h"

#include "card/requests.h"

namespace kestvox {

void DelayMicroseconds(CardHandle* handle, DWORD microseconds) {
    if (microseconds < 1000) {
        Stall(handle, microseconds);
        return;
    }
    const DWORD milliseconds = (microseconds + 999) / 1000;
    const DWORD start = timeGetTime();
    DWORD now = timeGetTime();
    while (now - start < milliseconds) {  // unsigned, so a wrap of the timer does no harm
        now = timeGetTime();
    }
    // The wait began somewhere inside a tick: only the next one makes it whole.
    const DWORD last = now;
    while (timeGetTime() == last) {
    }
}

}  // namespace kestvox
