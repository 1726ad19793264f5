// Bringing a whole clock group onto the rate and source that a starting stream needs.
//
// The group of a stream: its own card, its clock master, and every card whose `Master` setting names
// that master. One clock runs one rate: while the group runs at the stream's rate nothing is touched but
// the stream's own port register; otherwise a full run takes about 0.6 s when a clock changed and 50 ms
// when none did.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

// Called on the thread that opens or resumes the stream. Runs take turns, under ClockMutex. One that ends
// early leaves the cards held and flagged as they are: the next run clears that up.
//   WAVERR_BADFORMAT   the group has come to run at another rate since the open looked (without
//                      `ignoreClockError`)
//   MMSYSERR_ERROR     the external clock is not valid, or the incoming digital rate is another one
//                      (both are logged; they end the run only while the master's CheckClocks is on
//                      and `ignoreClockError` is not set: else the card goes on with its internal clock)
//   MMSYSERR_NODRIVER  a card of the group cannot be opened
//   MMSYSERR_INVALHANDLE  the stream has been closed meanwhile
MMRESULT ProgramSampleClock(StreamInstance* stream, bool ignoreClockError);

}  // namespace kestvox
