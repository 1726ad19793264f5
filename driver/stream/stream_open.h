// Opening and closing a wave device: the same sequence for both directions.
#pragma once

#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

#include "stream/stream_instance.h"

namespace kestvox {

// An open message. `device` = card ordinal x 2 + port; `user` receives the stream; `flags` are the
// message's, WAVE_FORMAT_QUERY among them (then nothing is opened or changed). The first failing step
// decides; a half-built stream is taken down completely.
//   MMSYSERR_INVALPARAM    a pointer is null
//   MMSYSERR_BADDEVICEID   no such card
//   MMSYSERR_NOTENABLED    the card is not enabled
//   WAVERR_BADFORMAT       the port does not take the format, or its clock runs at another rate
//   MMSYSERR_NOMEM         no memory
//   MMSYSERR_ALLOCATED     the port is open already, in this process or another
//   MMSYSERR_NODRIVER      a card's device cannot be opened, or the library is let go
//   MMSYSERR_ERROR         the clock is not valid or its rate not right; the hardware is not to be had
MMRESULT OpenStream(const Direction& direction, UINT device, DWORD_PTR* user, const WAVEOPENDESC* description,
                    DWORD flags);

// A close message. WAVERR_STILLPLAYING (and an entry in the event log) while headers are in the card and
// the stream was not just reset: nothing has changed then. Else every header has been returned and the
// stream is gone. MMSYSERR_INVALHANDLE when it is being closed already.
MMRESULT CloseStream(StreamInstance* stream);

// The same without asking. FALSE, and nothing is done, when the stream is being closed already.
BOOL ForceCloseStream(StreamInstance* stream);

}  // namespace kestvox
