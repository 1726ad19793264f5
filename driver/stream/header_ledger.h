// The client's headers that a stream holds: accepted and not yet returned, in the order of acceptance.
//
// It is what makes every header come back exactly once: a completion for a header that is not in flight
// here is not believed, and whatever is left here when a stream closes is returned. Headers are only
// compared here, never read. DriverMutex is held around every call.
#pragma once

#include <windows.h>
#include <mmsystem.h>

namespace kestvox {

struct HeldHeader {
    WAVEHDR* Header;
    DWORD Bytes;     // its dwBufferLength when it was accepted
    DWORD InFlight;  // times handed to the card and not completed; more than one in a loop
    DWORD Resets;    // resets of the stream before it was accepted
    bool Refused;    // the kernel did not take it
    bool Spent;      // played for the last time, but only known afterwards: a loop was broken
};

class HeaderLedger {
public:
    HeaderLedger() = default;
    ~HeaderLedger();
    HeaderLedger(const HeaderLedger&) = delete;
    HeaderLedger& operator=(const HeaderLedger&) = delete;

    // False when there is no memory. Only this call allocates.
    bool Accept(WAVEHDR* header, DWORD bytes, DWORD resets);

    // Null when the header is not held. Pointers are good until the next Accept or Forget.
    HeldHeader* Find(const WAVEHDR* header);
    HeldHeader* FindInFlight(const WAVEHDR* header);
    HeldHeader* FirstIdle(DWORD resets);  // not in flight, accepted before that many resets
    HeldHeader* FirstSpent();
    HeldHeader* First() { return count_ != 0 ? entries_ + begin_ : nullptr; }
    HeldHeader* Newest() { return count_ != 0 ? entries_ + begin_ + count_ - 1 : nullptr; }

    // The header accepted just before; null for the oldest.
    HeldHeader* Before(HeldHeader* held) { return held != entries_ + begin_ ? held - 1 : nullptr; }

    void Forget(HeldHeader* held);

private:
    bool MakeRoom();
    template <typename Predicate>
    HeldHeader* FindFirst(Predicate matches);

    HeldHeader* entries_ = nullptr;
    DWORD begin_ = 0;  // the oldest goes first as a rule, so the front is given up cheaply
    DWORD count_ = 0;
    DWORD capacity_ = 0;
};

}  // namespace kestvox
