// The multimedia timer, which shows the simulated cards' time.
#include <windows.h>
#include <mmsystem.h>

#include "simulator/attach.h"

DWORD WINAPI timeGetTime() {
    return simulator::TimerMilliseconds();
}

MMRESULT WINAPI timeGetSystemTime(LPMMTIME time, UINT size) {
    if (!time || size < sizeof *time) {
        return MMSYSERR_INVALPARAM;
    }
    time->wType = TIME_MS;
    time->u.ms = timeGetTime();
    return TIMERR_NOERROR;
}
