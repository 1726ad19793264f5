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

// The next one to return; null: there is none. `resets`: of the stream, when the first one was looked for.
using Choice = HeldHeader* (*)(HeaderLedger& ledger, DWORD resets);

// Returns the headers that `choose` finds, one after the other.
void ReturnHeaders(StreamInstance* stream, Choice choose) {
    const DWORD resets = stream->ResetCount;
    for (;;) {
        WAVEHDR* header = nullptr;
        {
            DriverLock lock;
            HeldHeader* held = choose(stream->Held, resets);
            if (held == nullptr) {
                return;
            }
            while (held->InFlight != 0) {
                CountCompleted(stream, held);
            }
            header = held->Header;
            ForgetHeader(stream, held);
        }
        if (!IsBadReadPtr(header, sizeof *header)) {
            ReturnHeader(stream, header);
        }
    }
}

}  // namespace

void CountCompleted(StreamInstance* stream, HeldHeader* held) {
    --held->InFlight;
    --stream->InFlightCount;
    stream->InFlightBytes -= static_cast<LONG>(held->Bytes);
}

// It leaves the queue, where a loop may have put it once more, and the chain that the loop may walk again.
void ForgetHeader(StreamInstance* stream, HeldHeader* held) {
    if (stream->PendingHeaders == held->Header) {
        stream->PendingHeaders = held->Header->lpNext;
    }
    HeldHeader* before = stream->LoopStart != nullptr ? held->Older : nullptr;
    if (before != nullptr && before->Header->lpNext == held->Header) {
        before->Header->lpNext = held->Header->lpNext;
    }
    ReleaseShadowBuffer(stream, held);
    stream->Held.Forget(held);
}

void ReturnHeader(StreamInstance* stream, WAVEHDR* header) {
    header->lpNext = nullptr;
    header->dwFlags = (header->dwFlags & ~static_cast<DWORD>(WHDR_INQUEUE)) | WHDR_DONE;
    NotifyClient(stream, stream->Direction->DoneMessage, reinterpret_cast<DWORD_PTR>(header));
}

void ReturnIdleHeaders(StreamInstance* stream) {
    ReturnHeaders(stream, [](HeaderLedger& ledger, DWORD resets) { return ledger.FirstIdle(resets); });
}

void ReturnSpentHeaders(StreamInstance* stream) {
    ReturnHeaders(stream, [](HeaderLedger& ledger, DWORD) { return ledger.FirstSpent(); });
}

void ReturnAllHeaders(StreamInstance* stream) {
    {
        DriverLock lock;
        stream->PendingHeaders = nullptr;
    }
    ReturnHeaders(stream, [](HeaderLedger& ledger, DWORD) { return ledger.Oldest(); });
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
