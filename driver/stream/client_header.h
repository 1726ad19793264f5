// What both directions do with a header that the client hands in, before it is queued.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

// MMSYSERR_INVALPARAM: null, another size than WAVEHDR's, no data. WAVERR_UNPREPARED.
// WAVERR_STILLPLAYING: the stream has it already.
MMRESULT CheckClientHeader(StreamInstance* stream, const WAVEHDR* header, DWORD size);

// Makes the header the stream's: owner, flags.
void MarkAccepted(StreamInstance* stream, WAVEHDR* header);

// Whether the card can use the header's own memory.
bool IsCardAligned(const WAVEHDR* header);

// Enters the header into the ledger and the queue. FALSE when there is no memory for its place,
// or the stream is closing.
BOOL QueueClientHeader(StreamInstance* stream, WAVEHDR* header);

}  // namespace kestvox
