#include "stream/stream_instance.h"

#include "card/heap.h"
#include "stream/shadow_buffer.h"

namespace kestvox {

StreamInstance* NewStream() {
    StreamInstance* stream = NewHeapObject<StreamInstance>();
    if (stream != nullptr) {
        InitializeCriticalSection(&stream->ControlLock);
        stream->References = 1;
    }
    return stream;
}

StreamUse::StreamUse(StreamInstance* stream) : stream_(stream) {
    ++stream->References;
    ++stream->Handlers;
}

StreamUse::~StreamUse() {
    --stream_->Handlers;
    ReleaseStream(stream_);
}

void ReleaseStream(StreamInstance* stream) {
    if (--stream->References != 0) {
        return;
    }
    CloseCardHandle(stream->Device);
    FreeAllShadowBuffers(stream);
    if (stream->StopEvent != nullptr) {
        CloseHandle(stream->StopEvent);
    }
    DeleteCriticalSection(&stream->ControlLock);
    FreeHeapObject(stream);
}

}  // namespace kestvox
