#include "stream/stream_open.h"

#include "card/card_table.h"
#include "card/clock_master.h"
#include "eventlog/driver_event.h"
#include "stream/clock_group.h"
#include "stream/header_return.h"
#include "stream/service_thread.h"
#include "stream/stream_control.h"
#include "stream/stream_list.h"
#include "stream/synchronized_start.h"

namespace kestvox {

namespace {

void FillClient(StreamInstance* stream, const WAVEOPENDESC& description, DWORD flags) {
    stream->OwnerProcessId = GetCurrentProcessId();
    stream->Callback = description.dwCallback;
    stream->OpenFlags = flags;
    stream->CallbackInstance = description.dwInstance;
    stream->WaveHandle = reinterpret_cast<DWORD_PTR>(description.hWave);
}

// Not while another program looks whether the last one that had the channel has died.
MMRESULT ClaimChannel(const CardRecord& card, DWORD channel, CardHandle** device) {
    MutexLock starts(SequenceMutex);
    return OpenCardHandle(card, channel, device);
}

// A stream with its channel claimed; null and the reason when that cannot be had.
MMRESULT ClaimStream(const Direction& direction, CardRecord& card, DWORD port, StreamInstance** claimed) {
    StreamInstance* stream = NewStream();
    if (stream == nullptr) {
        return MMSYSERR_NOMEM;
    }
    MMRESULT result = ClaimChannel(card, direction.FirstChannel + port, &stream->Device);
    if (result == MMSYSERR_NOERROR) {
        stream->Control = CreateMutexW(nullptr, FALSE, nullptr);
        stream->Progress = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        result = stream->Control != nullptr && stream->Progress != nullptr ? result : MMSYSERR_NOMEM;
    }
    if (result != MMSYSERR_NOERROR) {
        ReleaseStream(stream);
        return result;
    }
    stream->Direction = &direction;
    stream->Card = &card;
    stream->Port = port;
    *claimed = stream;
    return MMSYSERR_NOERROR;
}

void TakePartInClock(StreamInstance* stream, CardRecord& master) {
    stream->ClockMaster = &master;
    if (&master != stream->Card) {
        CardAttach(master.Ordinal);
    }
    CountOpen(stream);
}

// A clock that only dead processes have left running is free.
bool RateCanBeHad(CardRecord& master, DWORD rate) {
    const auto isFree = [&] { return master.GroupRate == 0 || master.GroupRate == rate; };
    if (!isFree()) {
        ForgetDeadStreams(master);
        ForgetIdleClock(master);
    }
    return isFree();
}

// Nothing starts the port any more: whoever has the stream's control next sees that it is closing.
void CleanUpPort(StreamInstance* stream) {
    ControlLock control(stream);
    stream->Direction->CleanUp(stream);
}

// Closes the device, unless somebody may still be using it: then whoever lets the stream go last does. The
// closer is one of the handlers.
void CloseDevice(StreamInstance* stream) {
    const BOOL serviceFinished = StopServiceThread(stream);
    const BOOL givenBack = WithdrawDevice(stream);
    const bool closingFromCallback = GetCurrentThreadId() == stream->ServiceThreadId;
    if (givenBack && stream->Handlers <= 1 && (serviceFinished || closingFromCallback)) {
        CloseCardHandle(stream->Device);
        stream->Device = nullptr;
    }
}

// From the preparation of the port to the open stream. The library may be let go meanwhile: then the stream
// is closed here, not there.
MMRESULT FinishOpening(StreamInstance* stream, const LibraryUse& library) {
    MMRESULT result = PrepareOpening(stream);
    if (result == MMSYSERR_NOERROR) {
        StartServiceThread(stream);
        stream->IsOpen = 1;
    }
    stream->Opening = 0;
    if (!library.IsOfThisLife() && result == MMSYSERR_NOERROR) {
        stream->OpenFlags = 0;
        result = MMSYSERR_NODRIVER;
    }
    if (result != MMSYSERR_NOERROR) {
        ForceCloseStream(stream);
    }
    return result;
}

}  // namespace

MMRESULT OpenStream(const Direction& direction, UINT device, DWORD_PTR* user, const WAVEOPENDESC* description,
                    DWORD flags) {
    const LibraryUse library;
    if (!library.IsOfThisLife()) {
        return MMSYSERR_NODRIVER;
    }
    const DWORD port = device & 1;
    if (user == nullptr || description == nullptr || description->lpFormat == nullptr) {
        return MMSYSERR_INVALPARAM;
    }
    CardRecord* card = FindCard(device >> 1);
    if (card == nullptr) {
        return MMSYSERR_BADDEVICEID;
    }
    if (card->EnableCount == 0) {
        return MMSYSERR_NOTENABLED;
    }
    const auto& requested = *reinterpret_cast<const WAVEFORMATEX*>(description->lpFormat);
    StreamFormat format = {};
    if (!direction.AcceptFormat(*card, port, requested, &format)) {
        return WAVERR_BADFORMAT;
    }
    if ((flags & WAVE_FORMAT_QUERY) != 0) {
        return MMSYSERR_NOERROR;
    }
    CardRecord& master = ResolveClockMaster(*card);
    if (!RateCanBeHad(master, format.SampleRate)) {
        return WAVERR_BADFORMAT;
    }
    StreamInstance* stream = nullptr;
    MMRESULT result = ClaimStream(direction, *card, port, &stream);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    TakePartInClock(stream, master);
    FillClient(stream, *description, flags);
    stream->Format = format;
    stream->Power = Preparing;
    stream->BeingPrepared = true;
    stream->Opening = 1;
    direction.InitializeFields(stream);
    StreamUse use(stream);
    AddStream(stream);
    result = FinishOpening(stream, library);
    if (result == MMSYSERR_NOERROR) {
        *user = reinterpret_cast<DWORD_PTR>(stream);
        NotifyClient(stream, direction.OpenMessage, 0);
    }
    return result;
}

MMRESULT CloseStream(StreamInstance* stream) {
    if (stream->InFlightCount != 0 && stream->JustReset == 0) {
        ReportDriverEvent(ClosedWhileBusy);
        return WAVERR_STILLPLAYING;
    }
    return ForceCloseStream(stream) ? MMSYSERR_NOERROR : MMSYSERR_INVALHANDLE;
}

BOOL ForceCloseStream(StreamInstance* stream) {
    if (stream->Closing.exchange(1) != 0) {
        return FALSE;
    }
    const Direction& direction = *stream->Direction;
    CardRecord& master = *stream->ClockMaster;
    direction.Reset(stream);
    CleanUpPort(stream);
    if (&master != stream->Card) {
        CardDetach(master.Ordinal);
    }
    CountClosed(stream);
    ReleaseWaitingStarts(direction, master);
    CloseDevice(stream);
    // What the kernel did not give back at the reset is returned now.
    ReturnAllHeaders(stream);
    RemoveStream(stream);
    if (stream->IsOpen != 0) {
        NotifyClient(stream, direction.CloseMessage, 0);
    }
    ForgetIdleClock(master);
    stream->IsOpen = 0;
    ReleaseStream(stream);
    return TRUE;
}

}  // namespace kestvox
