// How much of what the card recorded belongs to which buffer.
//
// The card does not tell how much of a buffer it has filled. It fills buffers in the order in which they were
// handed over and counts frames from each start, so a returned buffer holds what its run recorded less what
// the run's earlier buffers took, at most as much as fits. A run goes from a start to a stop; buffers that a
// stop gives back may still be on their way when the next run has begun, so several runs are kept apart. A
// buffer that was accepted after a reset never belongs to a run from before it, nor the other way round.
//
// Starts and stops write here under the stream's control, the completions read under DriverMutex; neither
// waits for the other.
#pragma once

#include "card/card_settings.h"

namespace kestvox {

struct StreamInstance;
struct HeldHeader;

class RecordedRuns {
public:
    // A run starts, after so many resets of the stream. One that the card has ended by itself is over.
    void Begin(DWORD resets);

    // It has stopped at a position in frames, whole transfer units; NoPosition: the card does not tell, and
    // nothing more is known to have been recorded.
    void End(DWORD frames);

    // Takes a returned buffer's share, in bytes of the client's layout; `capacity` is what the card puts into
    // it.
    DWORD TakeShare(const StreamInstance* stream, const HeldHeader& held, DWORD capacity);

private:
    // Runs that have ended and are not wholly given back. When there are more, the last two count as one, or
    // after a reset in between as the last.
    static constexpr DWORD MostEnded = 31;

    // In place of a number of resets: the run has not begun.
    static constexpr DWORD NotBegun = 0xFFFFFFFF;

    struct Run {
        SharedWord Resets = NotBegun;
        SharedWord StopPosition;
    };

    Run& At(DWORD number) { return runs_[number % (MostEnded + 1)]; }
    DWORD Remaining(const StreamInstance* stream, DWORD frames) const;
    DWORD LiveShare(const StreamInstance* stream, const HeldHeader& held, DWORD capacity);
    DWORD Deliver(DWORD bytes);

    Run runs_[MostEnded + 1];  // by number
    SharedWord ended_;         // runs that have ended; the next number is the live one's
    SharedWord served_;        // the run whose buffers are coming back
    DWORD bytesDelivered_;     // of it
};

}  // namespace kestvox
