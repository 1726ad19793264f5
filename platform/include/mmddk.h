// What a wave driver sees of the multimedia system: its messages and the client callback.
#pragma once

#include "mmsystem.h"

#define DCB_WINDOW 0x0001
#define DCB_TASK 0x0002
#define DCB_FUNCTION 0x0003
#define DCB_EVENT 0x0005
#define DCB_TYPEMASK 0x0007

#define DRVM_MAPPER 0x2000
#define DRVM_MAPPER_PREFERRED_GET (DRVM_MAPPER + 21)

#define DRV_QUERYMAPPABLE (DRV_RESERVED + 5)
#define DRV_QUERYDEVICEINTERFACE (DRV_RESERVED + 12)
#define DRV_QUERYDEVICEINTERFACESIZE (DRV_RESERVED + 13)

#define WODM_GETNUMDEVS 3
#define WODM_GETDEVCAPS 4
#define WODM_OPEN 5
#define WODM_CLOSE 6
#define WODM_PREPARE 7
#define WODM_UNPREPARE 8
#define WODM_WRITE 9
#define WODM_PAUSE 10
#define WODM_RESTART 11
#define WODM_RESET 12
#define WODM_GETPOS 13
#define WODM_GETPITCH 14
#define WODM_SETPITCH 15
#define WODM_GETVOLUME 16
#define WODM_SETVOLUME 17
#define WODM_GETPLAYBACKRATE 18
#define WODM_SETPLAYBACKRATE 19
#define WODM_BREAKLOOP 20

#define WIDM_GETNUMDEVS 50
#define WIDM_GETDEVCAPS 51
#define WIDM_OPEN 52
#define WIDM_CLOSE 53
#define WIDM_PREPARE 54
#define WIDM_UNPREPARE 55
#define WIDM_ADDBUFFER 56
#define WIDM_START 57
#define WIDM_STOP 58
#define WIDM_RESET 59
#define WIDM_GETPOS 60

#pragma pack(push, 1)

struct WAVEOPENDESC {
    HWAVE hWave;
    LPWAVEFORMAT lpFormat;
    DWORD_PTR dwCallback;
    DWORD_PTR dwInstance;
    UINT uMappedDeviceID;
    DWORD_PTR dnDevNode;
};

#pragma pack(pop)

#pragma GCC visibility push(default)
extern "C" {

BOOL WINAPI DriverCallback(DWORD_PTR dwCallback, DWORD dwFlags, HDRVR hDevice, DWORD dwMsg, DWORD_PTR dwUser,
                           DWORD_PTR dwParam1, DWORD_PTR dwParam2);

}  // extern "C"
#pragma GCC visibility pop
