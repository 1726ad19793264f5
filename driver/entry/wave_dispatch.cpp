#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

#include "card/registers.h"
#include "entry/device_capabilities.h"
#include "stream/stream_open.h"
#include "stream/stream_position.h"
#include "wavein/wave_input.h"
#include "waveout/wave_output.h"

namespace kestvox {

namespace {

// Private messages of both directions and of output only.
constexpr UINT SavePciMessage = 0x4000;
constexpr UINT RestorePciMessage = 0x4001;
constexpr UINT DirectModeMessage = 0x4002;

using Handler = MMRESULT (*)(StreamInstance* stream, DWORD_PTR param1, DWORD_PTR param2);

struct MessageRow {
    UINT Message;
    Handler Handle;
};

template <auto Function>
MMRESULT Plain(StreamInstance* stream, DWORD_PTR, DWORD_PTR) {
    return Function(stream);
}

MMRESULT Write(StreamInstance* stream, DWORD_PTR header, DWORD_PTR size) {
    return WriteOutput(stream, reinterpret_cast<WAVEHDR*>(header), static_cast<DWORD>(size));
}

MMRESULT Position(StreamInstance* stream, DWORD_PTR time, DWORD_PTR size) {
    return GetStreamPosition(stream, reinterpret_cast<MMTIME*>(time), static_cast<DWORD>(size));
}

MMRESULT GetVolume(StreamInstance* stream, DWORD_PTR volume, DWORD_PTR) {
    return GetOutputVolume(stream, reinterpret_cast<DWORD*>(volume));
}

MMRESULT SetVolume(StreamInstance* stream, DWORD_PTR volume, DWORD_PTR) {
    return SetOutputVolume(stream, static_cast<DWORD>(volume));
}

// From now on the card's own 32-bit slots pass through unconverted.
MMRESULT SetDirectMode(StreamInstance* stream) {
    stream->DirectMode = 1;
    stream->SampleFormat = SlotLeft;
    WritePort(stream->Device, port_register::Control, SlotLeft << PortFormatShift, PortFormatMask);
    return MMSYSERR_NOERROR;
}

constexpr MessageRow OutputMessages[] = {
    {WODM_CLOSE, Plain<CloseStream>},
    {WODM_WRITE, Write},
    {WODM_PAUSE, Plain<PauseOutput>},
    {WODM_RESTART, Plain<RestartOutput>},
    {WODM_RESET, Plain<ResetOutput>},
    {WODM_GETPOS, Position},
    {WODM_GETVOLUME, GetVolume},
    {WODM_SETVOLUME, SetVolume},
    {WODM_BREAKLOOP, Plain<BreakOutputLoop>},
    {SavePciMessage, Plain<SavePciConfiguration>},
    {RestorePciMessage, Plain<RestorePciConfiguration>},
    {DirectModeMessage, Plain<SetDirectMode>},
};

MMRESULT AddBuffer(StreamInstance* stream, DWORD_PTR header, DWORD_PTR size) {
    return AddInputBuffer(stream, reinterpret_cast<WAVEHDR*>(header), static_cast<DWORD>(size));
}

constexpr MessageRow InputMessages[] = {
    {WIDM_CLOSE, Plain<CloseStream>},          {WIDM_ADDBUFFER, AddBuffer},
    {WIDM_START, Plain<StartInput>},           {WIDM_STOP, Plain<StopInput>},
    {WIDM_RESET, Plain<ResetInput>},           {WIDM_GETPOS, Position},
    {DirectModeMessage, Plain<SetDirectMode>},
};

template <unsigned Count>
MMRESULT Dispatch(const MessageRow (&table)[Count], UINT message, DWORD_PTR user, DWORD_PTR param1,
                  DWORD_PTR param2) {
    if (user == 0) {
        return MMSYSERR_INVALPARAM;
    }
    StreamInstance* stream = reinterpret_cast<StreamInstance*>(user);
    if (stream->Card->EnableCount == 0) {
        return MMSYSERR_NOTENABLED;
    }
    for (const MessageRow& row : table) {
        if (row.Message == message) {
            StreamUse use(stream);
            return row.Handle(stream, param1, param2);
        }
    }
    return MMSYSERR_NOTSUPPORTED;
}

}  // namespace

}  // namespace kestvox

extern "C" DWORD WINAPI wodMessage(UINT device, UINT message, DWORD_PTR user, DWORD_PTR param1,
                                   DWORD_PTR param2) {
    using namespace kestvox;
    switch (message) {
    case WODM_GETNUMDEVS:
        return CountDevices();
    case WODM_GETDEVCAPS:
        return GetOutputCapabilities(device, reinterpret_cast<WAVEOUTCAPSW*>(param1));
    case WODM_OPEN:
        return OpenStream(OutputDirection, device, reinterpret_cast<DWORD_PTR*>(user),
                          reinterpret_cast<const WAVEOPENDESC*>(param1), static_cast<DWORD>(param2));
    default:
        return Dispatch(OutputMessages, message, user, param1, param2);
    }
}

extern "C" DWORD WINAPI widMessage(UINT device, UINT message, DWORD_PTR user, DWORD_PTR param1,
                                   DWORD_PTR param2) {
    using namespace kestvox;
    switch (message) {
    case WIDM_GETNUMDEVS:
        return CountDevices();
    case WIDM_GETDEVCAPS:
        return GetInputCapabilities(device, reinterpret_cast<WAVEINCAPSW*>(param1));
    case WIDM_OPEN:
        return OpenStream(InputDirection, device, reinterpret_cast<DWORD_PTR*>(user),
                          reinterpret_cast<const WAVEOPENDESC*>(param1), static_cast<DWORD>(param2));
    default:
        return Dispatch(InputMessages, message, user, param1, param2);
    }
}
