#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

#include <type_traits>

#include "entry/device_capabilities.h"
#include "stream/stream_control.h"
#include "stream/stream_open.h"
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

// A message carries its parameters as integers; a handler takes none, one or both of them as what they are.
template <typename Type>
Type Parameter(DWORD_PTR param) {
    if constexpr (std::is_pointer_v<Type>) {
        return reinterpret_cast<Type>(param);
    } else {
        return static_cast<Type>(param);
    }
}

MMRESULT Call(MMRESULT (*handler)(StreamInstance*), StreamInstance* stream, DWORD_PTR, DWORD_PTR) {
    return handler(stream);
}

template <typename First>
MMRESULT Call(MMRESULT (*handler)(StreamInstance*, First), StreamInstance* stream, DWORD_PTR param1,
              DWORD_PTR) {
    return handler(stream, Parameter<First>(param1));
}

template <typename First, typename Second>
MMRESULT Call(MMRESULT (*handler)(StreamInstance*, First, Second), StreamInstance* stream, DWORD_PTR param1,
              DWORD_PTR param2) {
    return handler(stream, Parameter<First>(param1), Parameter<Second>(param2));
}

template <auto Function>
MMRESULT To(StreamInstance* stream, DWORD_PTR param1, DWORD_PTR param2) {
    return Call(Function, stream, param1, param2);
}

constexpr MessageRow OutputMessages[] = {
    {WODM_CLOSE, To<CloseStream>},         {WODM_WRITE, To<WriteOutput>},
    {WODM_PAUSE, To<PauseOutput>},         {WODM_RESTART, To<StartStream>},
    {WODM_RESET, To<ResetOutput>},         {WODM_GETPOS, To<GetStreamPosition>},
    {WODM_GETVOLUME, To<GetOutputVolume>}, {WODM_SETVOLUME, To<SetOutputVolume>},
    {WODM_BREAKLOOP, To<BreakOutputLoop>}, {SavePciMessage, To<SaveCard>},
    {RestorePciMessage, To<RestoreCard>},  {DirectModeMessage, To<SetDirectMode>},
};

constexpr MessageRow InputMessages[] = {
    {WIDM_CLOSE, To<CloseStream>},          {WIDM_ADDBUFFER, To<AddInputBuffer>},
    {WIDM_START, To<StartStream>},          {WIDM_STOP, To<StopInput>},
    {WIDM_RESET, To<ResetInput>},           {WIDM_GETPOS, To<GetStreamPosition>},
    {DirectModeMessage, To<SetDirectMode>},
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
