// What differs between output and input streams: one table for each, in waveout/ and wavein/.
// Everything else about a stream is shared.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include "card/card_record.h"

namespace kestvox {

struct HeldHeader;
struct StreamInstance;
struct StreamFormat;

struct Direction {
    DWORD FirstChannel;  // kernel channel of port 0
    DWORD HoldBit;       // the direction's start hold in card register 36
    UINT OpenMessage;    // client messages
    UINT CloseMessage;
    UINT DoneMessage;
    bool WholeWords;  // the card transfers whole 32-bit words: lengths are rounded down

    // Counts on the clock master, of this direction and the opposite one
    SharedCount CardRecord::*OpenCount;
    SharedCount CardRecord::*RunningCount;
    SharedCount CardRecord::*WakingCount;
    SharedCount CardRecord::*OtherOpenCount;
    SharedCount CardRecord::*OtherRunningCount;
    SharedCount CardRecord::*OtherWakingCount;
    // Flags of the port on the stream's own card
    SharedWord (CardRecord::*PortOpen)[PortCount];
    SharedWord (CardRecord::*PortRunning)[PortCount];
    SharedWord (CardRecord::*PortPaused)[PortCount];  // null: the direction has no pause
    SharedWord (CardRecord::*PortResumePending)[PortCount];
    SharedWord (CardRecord::*PortCounted)[PortCount];  // ... in RunningCount
    SharedWord (CardRecord::*PortClockMaster)[PortCount];

    // Whether the card's port takes the format, and what it comes to.
    BOOL(*AcceptFormat)
    (const CardRecord& card, DWORD port, const WAVEFORMATEX& format, StreamFormat* accepted);
    // Fills what only this direction has in a new stream.
    void (*InitializeFields)(StreamInstance* stream);
    // Brings the opened port's hardware into a usable state. `ignoreClockError`: at a power resume.
    MMRESULT (*Prepare)(StreamInstance* stream, bool ignoreClockError);
    // Undoes Prepare, as far as it is to be undone, when the stream closes.
    void (*CleanUp)(StreamInstance* stream);
    // Stops the port and returns every header; the kernel gives back those in flight.
    MMRESULT (*Reset)(StreamInstance* stream);
    // Under the stream's control: before the port's transfer is started from standstill; and before its
    // channel is given up for a sleep, when ResumePending notes whether the port is to run after it.
    void (*BeginRun)(StreamInstance* stream);
    void (*StopForSleep)(StreamInstance* stream);
    // What only this direction marks in a header that is accepted. `overtaken`: by a reset, and so it goes
    // back at once. DriverMutex held.
    void (*MarkHeader)(StreamInstance* stream, WAVEHDR* header, bool overtaken);
    // Gives an accepted header whose own memory the card cannot use a shadow buffer, with what is to be
    // played.
    //   MMSYSERR_INVALPARAM   its length does not suit the conversion
    //   MMSYSERR_NOMEM
    MMRESULT (*FillShadowBuffer)(StreamInstance* stream, HeldHeader* held);
    // The next header to hand over, taken off the queue; null when there is none. DriverMutex held.
    WAVEHDR* (*TakeNext)(StreamInstance* stream);
    // A header in flight is complete: accounts for it, returns it when no further completion is to come, and
    // hands more over. DriverMutex held.
    void (*OnBufferDone)(StreamInstance* stream, HeldHeader* held);
};

extern const Direction OutputDirection;  // waveout/
extern const Direction InputDirection;   // wavein/

}  // namespace kestvox
