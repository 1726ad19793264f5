#include "stream/header_return.h"

#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

#include "card/locks.h"
#include "stream/shadow_buffer.h"

// Exported by the multimedia system; not every SDK declares it.
// NOLINTNEXTLINE(readability-redundant-declaration)
extern "C" BOOL WINAPI DriverCallback(DWORD_PTR callback, DWORD flags, HDRVR device, DWORD message,
                                      DWORD_PTR user, DWORD_PTR param1, DWORD_PTR param2);

namespace kestvox {

namespace {

// A header that goes back leaves the ledger, and the chain that an active loop may walk again.
void Forget(StreamInstance* stream, HeldHeader* held) {
    HeldHeader* before = stream->LoopStart != nullptr ? stream->Held.Before(held) : nullptr;
    if (before != nullptr && before->Header->lpNext == held->Header) {
        before->Header->lpNext = held->Header->lpNext;
    }
    stream->Held.Forget(held);
}

// Takes the header that `choose` finds out of the ledger; null when it finds none.
template <typename Choose>
WAVEHDR* TakeOutOfLedger(StreamInstance* stream, Choose choose) {
    DriverLock lock;
    HeldHeader* held = choose(stream->Held);
    if (held == nullptr) {
        return nullptr;
    }
    WAVEHDR* header = held->Header;
    while (held->InFlight != 0) {
        CountCompleted(stream, held);
    }
    Forget(stream, held);
    return header;
}

template <typename Choose>
void ReturnHeaders(StreamInstance* stream, Choose choose) {
    while (WAVEHDR* header = TakeOutOfLedger(stream, choose)) {
        ReturnUnheldHeader(stream, header);
    }
}

}  // namespace

void CountCompleted(StreamInstance* stream, HeldHeader* held) {
    --held->InFlight;
    --stream->InFlightCount;
    stream->InFlightBytes -= static_cast<LONG>(held->Bytes);
}

void ReturnUnheldHeader(StreamInstance* stream, WAVEHDR* header) {
    ReleaseShadowBuffer(stream, header);
    if (IsBadReadPtr(header, sizeof *header)) {
        return;
    }
    header->lpNext = nullptr;
    header->dwFlags = (header->dwFlags & ~static_cast<DWORD>(WHDR_INQUEUE)) | WHDR_DONE;
    NotifyClient(stream, stream->Direction->DoneMessage, reinterpret_cast<DWORD_PTR>(header));
}

void ReturnHeader(StreamInstance* stream, WAVEHDR* header) {
    {
        DriverLock lock;
        HeldHeader* held = stream->Held.Find(header);
        if (held == nullptr) {
            return;
        }
        Forget(stream, held);
    }
    ReturnUnheldHeader(stream, header);
}

void ReturnIdleHeaders(StreamInstance* stream) {
    const DWORD resets = stream->ResetCount;
    ReturnHeaders(stream, [resets](HeaderLedger& ledger) { return ledger.FirstIdle(resets); });
}

void ReturnSpentHeaders(StreamInstance* stream) {
    ReturnHeaders(stream, [](HeaderLedger& ledger) { return ledger.FirstSpent(); });
}

void ReturnAllHeaders(StreamInstance* stream) {
    {
        DriverLock lock;
        stream->PendingHeaders = nullptr;
    }
    ReturnHeaders(stream, [](HeaderLedger& ledger) { return ledger.First(); });
}

void NotifyClient(StreamInstance* stream, UINT message, DWORD_PTR param) {
    const DWORD type = HIWORD(stream->OpenFlags.load());
    if (type == 0) {
        return;
    }
    DriverCallback(stream->Callback, type, reinterpret_cast<HDRVR>(stream->WaveHandle), message,
                   stream->CallbackInstance, param, 0);
}

}  // namespace kestvox
