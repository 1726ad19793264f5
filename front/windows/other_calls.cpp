// The calls that have nothing to do with the cards. Those for files, MCI devices, MIDI, joysticks and timers
// are forwarded to the system's library. Those for mixers and auxiliary devices are refused, because the
// Kestrelvox has neither.
//
// The functions leave their arguments on the stack as the caller pushed them, so only the arguments' length
// in bytes is stated.
#include <windows.h>
#include <mmsystem.h>

#include "front/windows/system_library.h"

namespace {

struct SystemCall {
    const char* Name;
    FARPROC Address;
};

}  // namespace

extern "C" {

// Null when the system has no such function. Two threads that find the same address may both store it.
__attribute__((used)) FARPROC FindSystemCall(SystemCall* call) {
    if (!call->Address) {
        call->Address = front::FindInSystemLibrary(call->Name);
    }
    return call->Address;
}

// Goes on to the system's function of that name, or answers 0 when it has none.
#define FORWARDED(name, argumentBytes)                                              \
    static SystemCall systemCall_##name = {#name, nullptr};                         \
    __attribute__((naked)) void forward_##name() asm("_" #name "@" #argumentBytes); \
    void forward_##name() {                                                         \
        asm("pushl %0\n\t"                                                          \
            "call _FindSystemCall\n\t"                                              \
            "popl %%ecx\n\t"                                                        \
            "testl %%eax, %%eax\n\t"                                                \
            "je 1f\n\t"                                                             \
            "jmp *%%eax\n"                                                          \
            "1:\tret %1" ::"i"(&systemCall_##name),                                 \
            "i"(argumentBytes));                                                    \
    }

// Answers `result` to everything.
#define REFUSED(name, argumentBytes, result)                                       \
    __attribute__((naked)) void refuse_##name() asm("_" #name "@" #argumentBytes); \
    void refuse_##name() {                                                         \
        asm("movl %0, %%eax\n\tret %1" ::"i"(result), "i"(argumentBytes));         \
    }

// --- files ---
FORWARDED(mmioAdvance, 12)
FORWARDED(mmioAscend, 12)
FORWARDED(mmioClose, 8)
FORWARDED(mmioCreateChunk, 12)
FORWARDED(mmioDescend, 16)
FORWARDED(mmioFlush, 8)
FORWARDED(mmioGetInfo, 12)
FORWARDED(mmioInstallIOProcA, 12)
FORWARDED(mmioInstallIOProcW, 12)
FORWARDED(mmioOpenA, 12)
FORWARDED(mmioOpenW, 12)
FORWARDED(mmioRead, 12)
FORWARDED(mmioRenameA, 16)
FORWARDED(mmioRenameW, 16)
FORWARDED(mmioSeek, 12)
FORWARDED(mmioSendMessage, 16)
FORWARDED(mmioSetBuffer, 16)
FORWARDED(mmioSetInfo, 12)
FORWARDED(mmioStringToFOURCCA, 8)
FORWARDED(mmioStringToFOURCCW, 8)
FORWARDED(mmioWrite, 12)

// --- MCI devices ---
FORWARDED(mci32Message, 20)
FORWARDED(mciDriverNotify, 12)
FORWARDED(mciDriverYield, 4)
FORWARDED(mciExecute, 4)
FORWARDED(mciFreeCommandResource, 4)
FORWARDED(mciGetCreatorTask, 4)
FORWARDED(mciGetDeviceIDA, 4)
FORWARDED(mciGetDeviceIDFromElementIDA, 8)
FORWARDED(mciGetDeviceIDFromElementIDW, 8)
FORWARDED(mciGetDeviceIDW, 4)
FORWARDED(mciGetDriverData, 4)
FORWARDED(mciGetErrorStringA, 12)
FORWARDED(mciGetErrorStringW, 12)
FORWARDED(mciGetYieldProc, 8)
FORWARDED(mciLoadCommandResource, 12)
FORWARDED(mciSendCommandA, 16)
FORWARDED(mciSendCommandW, 16)
FORWARDED(mciSendStringA, 16)
FORWARDED(mciSendStringW, 16)
FORWARDED(mciSetDriverData, 8)
FORWARDED(mciSetYieldProc, 12)

// --- MIDI ---
FORWARDED(midiConnect, 12)
FORWARDED(midiDisconnect, 12)
FORWARDED(midiInAddBuffer, 12)
FORWARDED(midiInClose, 4)
FORWARDED(midiInGetDevCapsA, 12)
FORWARDED(midiInGetDevCapsW, 12)
FORWARDED(midiInGetErrorTextA, 12)
FORWARDED(midiInGetErrorTextW, 12)
FORWARDED(midiInGetID, 8)
FORWARDED(midiInGetNumDevs, 0)
FORWARDED(midiInMessage, 16)
FORWARDED(midiInOpen, 20)
FORWARDED(midiInPrepareHeader, 12)
FORWARDED(midiInReset, 4)
FORWARDED(midiInStart, 4)
FORWARDED(midiInStop, 4)
FORWARDED(midiInUnprepareHeader, 12)
FORWARDED(midiOutCacheDrumPatches, 16)
FORWARDED(midiOutCachePatches, 16)
FORWARDED(midiOutClose, 4)
FORWARDED(midiOutGetDevCapsA, 12)
FORWARDED(midiOutGetDevCapsW, 12)
FORWARDED(midiOutGetErrorTextA, 12)
FORWARDED(midiOutGetErrorTextW, 12)
FORWARDED(midiOutGetID, 8)
FORWARDED(midiOutGetNumDevs, 0)
FORWARDED(midiOutGetVolume, 8)
FORWARDED(midiOutLongMsg, 12)
FORWARDED(midiOutMessage, 16)
FORWARDED(midiOutOpen, 20)
FORWARDED(midiOutPrepareHeader, 12)
FORWARDED(midiOutReset, 4)
FORWARDED(midiOutSetVolume, 8)
FORWARDED(midiOutShortMsg, 8)
FORWARDED(midiOutUnprepareHeader, 12)
FORWARDED(midiStreamClose, 4)
FORWARDED(midiStreamOpen, 24)
FORWARDED(midiStreamOut, 12)
FORWARDED(midiStreamPause, 4)
FORWARDED(midiStreamPosition, 12)
FORWARDED(midiStreamProperty, 12)
FORWARDED(midiStreamRestart, 4)
FORWARDED(midiStreamStop, 4)

// --- joysticks ---
FORWARDED(joyConfigChanged, 4)
FORWARDED(joyGetDevCapsA, 12)
FORWARDED(joyGetDevCapsW, 12)
FORWARDED(joyGetNumDevs, 0)
FORWARDED(joyGetPos, 8)
FORWARDED(joyGetPosEx, 8)
FORWARDED(joyGetThreshold, 8)
FORWARDED(joyReleaseCapture, 4)
FORWARDED(joySetCapture, 16)
FORWARDED(joySetThreshold, 8)

// --- timer events, and the resolution of the timer ---
FORWARDED(timeBeginPeriod, 4)
FORWARDED(timeEndPeriod, 4)
FORWARDED(timeGetDevCaps, 8)
FORWARDED(timeKillEvent, 4)
FORWARDED(timeSetEvent, 20)

// --- tasks and drivers ---
FORWARDED(mmDrvInstall, 12)
FORWARDED(mmGetCurrentTask, 0)
FORWARDED(mmTaskBlock, 4)
FORWARDED(mmTaskCreate, 12)
FORWARDED(mmTaskSignal, 4)
FORWARDED(mmTaskYield, 0)
FORWARDED(mmsystemGetVersion, 0)

// --- for the 16-bit subsystem and the debugger ---
FORWARDED(NotifyCallbackData, 20)
FORWARDED(WOW32DriverCallback, 28)
FORWARDED(WOW32ResolveMultiMediaHandle, 24)
FORWARDED(WOWAppExit, 4)
FORWARDED(aux32Message, 20)
FORWARDED(joy32Message, 20)
FORWARDED(mid32Message, 20)
FORWARDED(mod32Message, 20)
FORWARDED(mxd32Message, 20)
FORWARDED(tid32Message, 20)
FORWARDED(wid32Message, 20)
FORWARDED(winmmDbgOut, 0)
FORWARDED(winmmSetDebugLevel, 4)
FORWARDED(wod32Message, 20)

// --- mixers ---
REFUSED(mixerClose, 4, MMSYSERR_INVALHANDLE)
REFUSED(mixerGetControlDetailsA, 12, MMSYSERR_NODRIVER)
REFUSED(mixerGetControlDetailsW, 12, MMSYSERR_NODRIVER)
REFUSED(mixerGetDevCapsA, 12, MMSYSERR_BADDEVICEID)
REFUSED(mixerGetDevCapsW, 12, MMSYSERR_BADDEVICEID)
REFUSED(mixerGetID, 12, MMSYSERR_NODRIVER)
REFUSED(mixerGetLineControlsA, 12, MMSYSERR_NODRIVER)
REFUSED(mixerGetLineControlsW, 12, MMSYSERR_NODRIVER)
REFUSED(mixerGetLineInfoA, 12, MMSYSERR_NODRIVER)
REFUSED(mixerGetLineInfoW, 12, MMSYSERR_NODRIVER)
REFUSED(mixerGetNumDevs, 0, 0)
REFUSED(mixerMessage, 16, MMSYSERR_INVALHANDLE)
REFUSED(mixerOpen, 20, MMSYSERR_BADDEVICEID)
REFUSED(mixerSetControlDetails, 12, MMSYSERR_NODRIVER)

// --- auxiliary devices ---
REFUSED(auxGetDevCapsA, 12, MMSYSERR_BADDEVICEID)
REFUSED(auxGetDevCapsW, 12, MMSYSERR_BADDEVICEID)
REFUSED(auxGetNumDevs, 0, 0)
REFUSED(auxGetVolume, 8, MMSYSERR_BADDEVICEID)
REFUSED(auxOutMessage, 16, MMSYSERR_BADDEVICEID)
REFUSED(auxSetVolume, 8, MMSYSERR_BADDEVICEID)

}  // extern "C"
