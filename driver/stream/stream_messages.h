// Messages that both directions answer alike.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

// Where the stream is. Fills `*time` with bytes of the client's layout when it asks for TIME_BYTES (modulo
// 2^32), else with sample frames.
//   MMSYSERR_INVALPARAM   no structure, or one that is too small
//   MMSYSERR_ERROR        the card does not tell
MMRESULT GetStreamPosition(StreamInstance* stream, MMTIME* time, DWORD size);

// Direct mode, until the close: the card's own 32-bit slots pass through unconverted. Always answers
// MMSYSERR_NOERROR, as the message does.
MMRESULT SetDirectMode(StreamInstance* stream);

}  // namespace kestvox
