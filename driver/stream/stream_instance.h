// One open wave device in one process.
//
// The open makes it, and WinMM passes its address back with every later message; the close unlinks it.
// The record lives until the last of its users lets it go: the open stream itself, its service thread, and
// every message that is being handled (a client may close from inside the callback of another message).
// Words that the service thread and application threads share are atomic; what open negotiated does not
// change. locks.h tells which lock guards what: DriverMutex the queue, the ledger and the shadow buffers; the
// stream's control the port's flags in the card table and its power.
#pragma once

#include "card/card_handle.h"
#include "card/pci_configuration.h"
#include "convert/capture.h"
#include "format/sample_format.h"
#include "stream/direction.h"
#include "stream/header_ledger.h"
#include "stream/recorded_runs.h"

namespace kestvox {

struct ShadowBuffer;

// Whether the port has its channel, and is as its client left it.
enum PortPower : DWORD {
    Awake,      // messages act on it at once
    Asleep,     // the channel is given up: headers stay queued, and starts and stops are noted for later
    Preparing,  // the channel is back, the port is being prepared; like Asleep
    Prepared,   // headers are handed over again; starts and stops are still noted, so that they come after
};

// What the one thread that hands headers over for a stream still has to do (header_queue.h).
struct HandOverWork {
    DWORD Added;     // single headers
    bool Written;    // all that the rule allows
    bool Completed;  // ... with a transfer that is started in any case
};

struct HandOverTurn {
    SharedCount Calls;  // 0: no thread is at it
    HandOverWork Work;
    WAVEHDR* NotSubmitted;  // taken off the queue, and then the port fell asleep: the next one to hand over
};

struct StreamInstance {
    StreamInstance* Next;  // older stream of this process; the list's lock
    CardHandle* Device;    // the stream's own, bound to its channel
    DWORD OwnerProcessId;
    CardRecord* Card;
    CardRecord* ClockMaster;  // the card whose clock the stream runs on: its own or the link's master
    const kestvox::Direction* Direction;
    DWORD Port;  // 0 analog, 1 digital

    DWORD_PTR Callback;
    std::atomic<DWORD> OpenFlags;  // high word: callback type; 0: the client is not called any more
    DWORD_PTR CallbackInstance;
    DWORD_PTR WaveHandle;

    StreamFormat Format;
    SharedWord DirectMode;

    ShadowBuffer* FreeBuffers;  // for the next headers that need one; most recently released first
    HeaderLedger Held;
    WAVEHDR* PendingHeaders;    // next header for the card, linked through lpNext
    SharedCount InFlightCount;  // headers in the card
    SharedCount InFlightBytes;  // ... and their dwBufferLength
    HandOverTurn HandOver;      // DriverMutex
    SharedWord ResetCount;      // resets begun; tells headers from before a reset from later ones

    DWORD QueuedLoopCount;  // output: passes stamped into headers between loop begin and loop end
    DWORD LoopPassesLeft;   // output: of the loop that is being handed over
    WAVEHDR* LoopStart;
    SharedWord Volume;       // output: low 16 bits
    SharedWord VolumeIsSet;  // output: by the client, since the open

    RecordedRuns Recorded;  // input
    DitherState Dither;     // input; DriverMutex
    DWORD DitherResets;     // input; DriverMutex: the resets before the buffers that it has served

    SharedWord Resetting;  // resets under way: a client may reset inside the callback of a reset
    SharedWord IsOpen;
    SharedWord Opening;        // only the thread that opens it closes it
    SharedWord Closing;        // the client can act on the stream no more
    SharedWord JustReset;      // set by a reset, cleared by the message that acts on the stream next
    SharedWord Power;          // PortPower
    SharedWord Sleeps;         // how often Power has become Asleep
    SharedWord PreparedInits;  // InitCount of card and clock master when the port was last prepared
    bool BeingPrepared;        // by one thread; the stream's control
    PciConfiguration SavedPciConfig;

    HANDLE ServiceThread;
    DWORD ServiceThreadId;
    HANDLE StopEvent;
    SharedWord ServiceRunning;   // the thread waits for completions
    SharedWord ServiceFinished;  // the thread has done with the stream and its device
    WAVEHDR** Completions;       // collected by the service thread, which alone touches these four
    LONG CompletionCount;
    LONG CompletionsDispatched;
    bool RefusedCompleted;  // buffers that the kernel refused were among them; DriverMutex
    LONG CompletionCapacity;

    SharedCount References;  // users, see above
    SharedCount Handlers;    // messages that are being handled
    SharedWord ArmBitSet;    // the port waits for the start hold when it is armed
    SharedCount Loans;       // borrowers of Device; changes under the list's lock
    bool Lendable;           // Device may be borrowed; the list's lock
    DWORD Walk;              // the last walk over the list that came here; the list's lock
    HANDLE Control;          // the mutex of its control
    HANDLE Progress;         // auto-reset event: something that AwaitProgress waits for may have happened

    // In the card table.
    SharedWord& Running() { return PortFlag(Direction->PortRunning); }
    SharedWord& ResumePending() { return PortFlag(Direction->PortResumePending); }
    SharedWord& Counted() { return PortFlag(Direction->PortCounted); }
    SharedWord& PortFlag(SharedWord (CardRecord::*flags)[PortCount]) { return (Card->*flags)[Port]; }
    // As the card reads it now; bytes of a client's sample; bytes of so many frames of them, modulo 2^32.
    WORD SampleFormat() const { return DirectMode != 0 ? WORD{SlotLeft} : Format.SampleFormat; }
    DWORD SampleSize() const { return ClientSampleSize(SampleFormat(), Format.Conversion); }
    DWORD BytesOf(DWORD frames) const { return frames * SampleSize() * Format.Channels; }
};

// The library's lives in its process, each from DRV_LOAD to DRV_FREE. The first begins by itself; one that
// has begun or ended already stays so.
void BeginLibraryLife();
void EndLibraryLife();

// Keeps the library's mutexes while an operation goes on that needs more than one of them.
class LibraryUse {
public:
    LibraryUse();
    ~LibraryUse();
    LibraryUse(const LibraryUse&) = delete;
    LibraryUse& operator=(const LibraryUse&) = delete;

    // Whether it began in a life of the library that has not ended since.
    bool IsOfThisLife() const;

private:
    DWORD life_;
};

// Keeps a stream's record, and its device handle, while a message or another operation on it is handled.
class StreamUse {
public:
    explicit StreamUse(StreamInstance* stream);
    ~StreamUse();
    StreamUse(const StreamUse&) = delete;
    StreamUse& operator=(const StreamUse&) = delete;

private:
    const LibraryUse library_;
    StreamInstance* stream_;
};

// Whether there are such uses in this process.
bool LibraryInUse();

// Waits in real time until `done(stream)` says yes, at most so many milliseconds; what it says at the end. It
// is asked again whenever Progress is set, and every ten milliseconds. No lock may be held.
bool AwaitProgress(StreamInstance* stream, DWORD milliseconds, bool (*done)(StreamInstance* stream));

// Null when there is no memory. The record starts with one reference.
StreamInstance* NewStream();

// Lets one reference go; with the last one everything that the stream still owns is closed and freed.
void ReleaseStream(StreamInstance* stream);

}  // namespace kestvox
