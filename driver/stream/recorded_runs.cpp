#include "stream/recorded_runs.h"

#include "card/requests.h"
#include "stream/stream_instance.h"

namespace kestvox {

namespace {

// The most that a full buffer may have been given beyond a stop's whole units, in bytes of any layout.
constexpr DWORD TransferUnit = 32;

DWORD Smaller(DWORD a, DWORD b) {
    return a < b ? a : b;
}

}  // namespace

void RecordedRuns::Begin(DWORD resets) {
    if (At(ended_).Resets != NotBegun) {
        End(NoPosition);
    }
    At(ended_).Resets = resets;
}

void RecordedRuns::End(DWORD frames) {
    Run& run = At(ended_);
    if (ended_ - served_ < MostEnded) {
        run.StopPosition = frames;
        At(ended_ + 1).Resets = NotBegun;
        ++ended_;
        return;
    }
    Run& last = At(ended_ - 1);
    if (last.Resets != run.Resets || last.StopPosition == NoPosition) {
        last.Resets = run.Resets.load();
        last.StopPosition = frames;
    } else if (frames != NoPosition) {
        last.StopPosition += frames;
    }
    run.Resets = NotBegun;
}

// Of a position in the run that is being served. A stop counts whole transfer units, a full buffer every
// byte: so a little more may have been delivered.
DWORD RecordedRuns::Remaining(const StreamInstance* stream, DWORD frames) const {
    if (frames == 0) {
        return 0;  // also when the card has been reset in the middle of the run
    }
    const DWORD bytes = stream->BytesOf(frames);
    return bytesDelivered_ - bytes < TransferUnit ? 0 : bytes - bytesDelivered_;
}

// Of the run that goes on, as long as it does.
DWORD RecordedRuns::LiveShare(const StreamInstance* stream, const HeldHeader& held, DWORD capacity) {
    const bool running = (stream->Card->*stream->Direction->PortRunning)[stream->Port] != 0;
    if (!running || At(served_).Resets != held.Resets) {
        return 0;  // no run has filled it
    }
    const DWORD frames = GetPosition(stream->Device);
    // The card has given the buffer back: when it does not tell how far it is, the buffer counts as full.
    return frames != NoPosition ? Smaller(capacity, Remaining(stream, frames)) : capacity;
}

DWORD RecordedRuns::TakeShare(const StreamInstance* stream, const HeldHeader& held, DWORD capacity) {
    for (;;) {
        const DWORD ended = ended_;
        for (; served_ != ended && At(served_).Resets <= held.Resets; ++served_, bytesDelivered_ = 0) {
            const Run& run = At(served_);
            const DWORD left = run.StopPosition != NoPosition ? Remaining(stream, run.StopPosition) : 0;
            if (left != 0 && run.Resets == held.Resets) {
                return Deliver(Smaller(capacity, left));
            }
        }
        const DWORD share = served_ == ended ? LiveShare(stream, held, capacity) : 0;
        if (ended_ == ended) {
            return Deliver(share);
        }
        // A run has ended meanwhile.
    }
}

DWORD RecordedRuns::Deliver(DWORD bytes) {
    bytesDelivered_ += bytes;
    return bytes;
}

}  // namespace kestvox
