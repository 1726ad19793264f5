#include "card/locks.h"
#include "stream/header_queue.h"
#include "stream/header_return.h"
#include "waveout/output_parts.h"
#include "waveout/wave_output.h"

namespace kestvox {

namespace {

bool Has(const WAVEHDR* header, DWORD flag) {
    return (header->dwFlags & flag) != 0;
}

// A header whose last play was in a pass that has gone by: no completion will return it.
void MarkSpent(StreamInstance* stream, const WAVEHDR* header) {
    HeldHeader* held = stream->Held.Find(header);
    if (held != nullptr && held->InFlight == 0) {
        held->Spent = true;
    }
}

DWORD Without(DWORD passes, DWORD loops, DWORD least) {
    return loops > passes + least ? loops - passes : least;
}

}  // namespace

// The walk meets only headers that are held: one that goes back to the client leaves the chain. When the
// loop's end was not accepted it also meets headers from after the loop, which expect no pass, or those of
// another loop. One that is still to be handed over has a pass before it in any case.
void GiveUpPasses(StreamInstance* stream) {
    if (stream->LoopStart == nullptr || stream->LoopPassesLeft <= 1) {
        return;
    }
    const DWORD passes = stream->LoopPassesLeft - 1;
    const WAVEHDR* last = nullptr;
    DWORD least = 0;
    for (WAVEHDR* header = stream->LoopStart; header != nullptr && last == nullptr; header = header->lpNext) {
        least = header == stream->PendingHeaders ? 1 : least;
        if (header->dwLoops != 0) {
            header->dwLoops = Without(passes, header->dwLoops, least);
            if (header->dwLoops == 0) {
                MarkSpent(stream, header);
            }
        }
        if (Has(header, WHDR_ENDLOOP)) {
            last = header;
        }
    }
    if (last == nullptr && stream->QueuedLoopCount != 0) {
        stream->QueuedLoopCount = 1;  // the rest of the loop is still to be written, for this pass alone
    }
    stream->LoopPassesLeft = 1;
}

void StampLoop(StreamInstance* stream, WAVEHDR* header, bool overtaken) {
    if (overtaken) {
        return;
    }
    if (Has(header, WHDR_BEGINLOOP) && stream->QueuedLoopCount == 0) {
        stream->QueuedLoopCount = header->dwLoops != 0 ? header->dwLoops : 1;
    }
    header->dwLoops = stream->QueuedLoopCount;
    if (Has(header, WHDR_ENDLOOP)) {
        stream->QueuedLoopCount = 0;
    }
}

WAVEHDR* TakeNextOutput(StreamInstance* stream) {
    WAVEHDR* header = TakePendingHeader(stream);
    if (header == nullptr) {
        return nullptr;
    }
    const bool resetting = stream->Resetting != 0;
    if (Has(header, WHDR_BEGINLOOP) && stream->LoopStart == nullptr && !resetting) {
        stream->LoopStart = header;
        stream->LoopPassesLeft = header->dwLoops;
    }
    if (Has(header, WHDR_ENDLOOP) && stream->LoopStart != nullptr) {
        --stream->LoopPassesLeft;
        if (stream->LoopPassesLeft != 0) {
            stream->PendingHeaders = stream->LoopStart;
        } else {
            stream->LoopStart = nullptr;
        }
    }
    if (resetting) {
        header->dwLoops = 0;
    }
    return header;
}

MMRESULT BreakOutputLoop(StreamInstance* stream) {
    stream->JustReset = 0;
    {
        DriverLock lock;
        GiveUpPasses(stream);
    }
    ReturnSpentHeaders(stream);
    return MMSYSERR_NOERROR;
}

}  // namespace kestvox
