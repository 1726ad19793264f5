#include "stream/stream_reset.h"

#include "stream/buffer_transport.h"
#include "stream/driver_mutex.h"

namespace kestvox {

void BeginReset(StreamInstance* stream) {
    DriverLock lock;
    ++stream->Resetting;
    ++stream->ResetCount;
}

void EmptyQueue(StreamInstance* stream) {
    DriverLock lock;
    while (HeldBeforeReset(stream, stream->PendingHeaders)) {
        stream->Direction->TakePendingHeader(stream);
    }
}

BOOL FinishReset(StreamInstance* stream) {
    DriverLock lock;
    if (--stream->Resetting != 0) {
        return FALSE;
    }
    const bool handedInSince = stream->PendingHeaders != nullptr;
    stream->JustReset = !handedInSince;
    return handedInSince;
}

}  // namespace kestvox
