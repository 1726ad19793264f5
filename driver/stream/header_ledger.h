// The client's headers that a stream holds: accepted and not yet returned.
//
// It is what makes every header come back exactly once: a completion for a header that is not in flight here
// is ignored, and whatever is left here when a stream closes is returned. Headers are found by their address
// and never read. Each call takes the same time, however many are held. DriverMutex is held around every
// call.
#pragma once

#include <windows.h>
#include <mmsystem.h>

namespace kestvox {

struct ShadowBuffer;

struct HeldHeader {
    WAVEHDR* Header;
    DWORD Bytes;           // its dwBufferLength when it was accepted
    DWORD InFlight;        // times handed to the card and not completed; more than one in a loop
    DWORD Resets;          // resets of the stream before it was accepted
    bool Refused;          // the kernel did not take it
    bool Spent;            // played for the last time, but only known afterwards: a loop was broken
    ShadowBuffer* Shadow;  // what the card uses in place of the header's own memory; null: nothing
    HeldHeader* Older;     // neighbours in the order of queueing
    HeldHeader* Newer;
    HeldHeader* NextInBucket;
};

class HeaderLedger {
public:
    HeaderLedger() = default;
    ~HeaderLedger();
    HeaderLedger(const HeaderLedger&) = delete;
    HeaderLedger& operator=(const HeaderLedger&) = delete;

    // Null when there is no memory. The header can be found from now on; its place in the order is behind all
    // that were queued before Queue is called for it.
    HeldHeader* Accept(WAVEHDR* header, DWORD bytes, DWORD resets);
    void Queue(HeldHeader* held);
    void Forget(HeldHeader* held);

    // Null when there is none. Find finds every accepted header, the others those that are queued.
    HeldHeader* Find(const WAVEHDR* header);
    HeldHeader* Oldest() { return oldest_; }
    HeldHeader* Newest() { return newest_; }
    HeldHeader* FirstIdle(DWORD resets);  // not in flight, accepted before that many resets
    HeldHeader* FirstSpent();

private:
    static constexpr DWORD MostBlocks = 24;

    HeldHeader** BucketOf(const WAVEHDR* header);
    bool Grow();

    HeldHeader* oldest_ = nullptr;
    HeldHeader* newest_ = nullptr;
    HeldHeader** buckets_ = nullptr;       // by address
    HeldHeader* unused_ = nullptr;         // linked through NextInBucket
    HeldHeader* blocks_[MostBlocks] = {};  // the records; each block doubles their number
    DWORD blockCount_ = 0;
    DWORD capacity_ = 0;  // records, and buckets: a power of two
};

}  // namespace kestvox
