// What happens when the card has played a buffer: the pass is counted, the header goes back to the client
// when it was the last one, and the next headers go to the card.
#include "stream/header_queue.h"
#include "stream/header_return.h"
#include "waveout/output_parts.h"

namespace kestvox {

namespace {

// The pass that the header has just played was one of those that it was stamped with at the write.
void CountPass(WAVEHDR* header) {
    if (header->dwLoops != 0) {
        --header->dwLoops;
    }
}

}  // namespace

void OutputBufferDone(StreamInstance* stream, HeldHeader* held) {
    WAVEHDR* header = held->Header;
    CountPass(header);
    CountCompleted(stream, held);
    const bool noPassLeft = header->dwLoops == 0 || held->Resets != stream->ResetCount;
    if (noPassLeft && held->InFlight == 0) {  // no completion is to come
        header->dwLoops = 0;
        ForgetHeader(stream, held);
        ReturnHeader(stream, header);
        if (stream->IsOpen == 0) {
            return;  // the client closed from inside its callback
        }
    }
    if (stream->Resetting == 0) {
        HandOver(stream, HandOverCall::Completed);
    }
}

}  // namespace kestvox
