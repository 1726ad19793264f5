// What both directions do with a header that the client hands in, before it is queued.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

// What a direction does to a header that has been checked and marked: gives it a buffer that the card can
// use, where its own memory will not do. Its failure is the message's result.
using PrepareHeader = MMRESULT (*)(StreamInstance* stream, WAVEHDR* header);

// Checks and marks the header, has it prepared, and enters it into the ledger and the queue.
//   MMSYSERR_INVALPARAM   null, another size than WAVEHDR's, no data
//   WAVERR_UNPREPARED
//   WAVERR_STILLPLAYING   the stream has it already
//   MMSYSERR_NOMEM        marked but not queued
//   MMSYSERR_INVALHANDLE  the stream is closing
MMRESULT AcceptClientHeader(StreamInstance* stream, WAVEHDR* header, DWORD size, PrepareHeader prepare);

// Whether the card can use the header's own memory.
bool IsCardAligned(const WAVEHDR* header);

}  // namespace kestvox
