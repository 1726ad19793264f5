// Open handles to a card's kernel device, and the one routine through which requests are sent.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include "card/card_record.h"
#include "card/layers_above.h"
#include "card/protocol.h"

namespace kestvox {

// Bound to one card and to at most one of its channels. Owned by whoever opened it; per process.
// Several threads may send requests through one handle: the same OVERLAPPED serves them all, which is
// sound because the kernel driver completes every request whose answer is read before it returns.
struct CardHandle {
    HANDLE FileHandle;
    OVERLAPPED Overlapped;  // its event is made for this handle and never waited on
};

// Opens the card's device, binds the handle to `channel` (0..3 or ControlChannel) and, for a channel,
// acquires its hardware. `*handle` is null unless the result is MMSYSERR_NOERROR.
//   MMSYSERR_NOMEM      no memory
//   MMSYSERR_NODRIVER   no such card, or its kernel driver is not running
//   MMSYSERR_ALLOCATED  the channel is claimed by another handle, in this process or another
//   MMSYSERR_ERROR      no event, or the hardware cannot be acquired
MMRESULT OpenCardHandle(const CardRecord& card, DWORD channel, CardHandle** handle);

// Releases the channel and closes the handle. Null is left alone.
void CloseCardHandle(CardHandle* handle);

// Sends one request. A request that the kernel leaves pending counts as done: TRUE, nothing returned.
// FALSE without a call when the handle is null or unusable.
BOOL CardRequest(CardHandle* handle, DWORD code, const void* input, DWORD inputLength, void* output,
                 DWORD outputLength, DWORD* bytesReturned);

// A handle for an operation on a card that is not tied to one stream: that of one of this process's streams
// on the card or, when there is none, a control handle that is closed at the end of the scope. Every
// request through it fails when neither can be had.
class BorrowedHandle {
public:
    explicit BorrowedHandle(CardRecord& card);
    ~BorrowedHandle();
    BorrowedHandle(const BorrowedHandle&) = delete;
    BorrowedHandle& operator=(const BorrowedHandle&) = delete;

    CardHandle* Get() const { return handle_; }
    explicit operator bool() const { return handle_ != nullptr; }

private:
    StreamLoan loan_;
    CardHandle* handle_;
};

}  // namespace kestvox
