// Where a stream is.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

// Fills `*time` with bytes of the client's layout when it asks for TIME_BYTES (modulo 2^32), else with
// sample frames. MMSYSERR_INVALPARAM: no or too small a structure; MMSYSERR_ERROR: the card does not tell.
MMRESULT GetStreamPosition(StreamInstance* stream, MMTIME* time, DWORD size);

}  // namespace kestvox
