#include "stream/stream_instance.h"

#include <initializer_list>

#include "card/heap.h"
#include "card/locks.h"
#include "stream/shadow_buffer.h"

namespace kestvox {

namespace {

constexpr DWORD LongestNap = 10;  // milliseconds

SharedCount UseCount = 0;

// Odd between two lives of the library.
SharedWord Life = 0;

}  // namespace

StreamInstance* NewStream() {
    StreamInstance* stream = NewHeapObject<StreamInstance>();
    if (stream != nullptr) {
        stream->References = 1;
    }
    return stream;
}

void BeginLibraryLife() {
    if ((Life & 1) != 0) {
        ++Life;
    }
}

void EndLibraryLife() {
    Life |= 1;
}

// Counts before it looks: whoever ends the life meanwhile waits for it, or is noticed.
LibraryUse::LibraryUse() {
    ++UseCount;
    life_ = Life;
}

LibraryUse::~LibraryUse() {
    --UseCount;
}

bool LibraryUse::IsOfThisLife() const {
    return (life_ & 1) == 0 && life_ == Life;
}

StreamUse::StreamUse(StreamInstance* stream) : stream_(stream) {
    ++stream->References;
    ++stream->Handlers;
}

StreamUse::~StreamUse() {
    --stream_->Handlers;
    ReleaseStream(stream_);
}

bool LibraryInUse() {
    return UseCount != 0;
}

// What the multimedia timer says is the cards' time when they are simulated: a wait that ends for nothing is
// what counts here.
bool AwaitProgress(StreamInstance* stream, DWORD milliseconds, bool (*done)(StreamInstance* stream)) {
    const DWORD patience = PatienceFor(milliseconds);
    DWORD nap = 1;
    for (DWORD waited = 0; !done(stream); nap = nap * 2 < LongestNap ? nap * 2 : LongestNap) {
        if (waited >= patience) {
            return false;
        }
        if (WaitForSingleObject(stream->Progress, nap) != WAIT_OBJECT_0) {
            waited += nap;
            SpendPatience(nap);
        }
    }
    return true;
}

// Nobody else can reach the stream any more, so nothing here waits for a lock.
void ReleaseStream(StreamInstance* stream) {
    if (--stream->References != 0) {
        return;
    }
    CloseCardHandle(stream->Device);
    FreeLastShadowBuffers(stream);
    for (HANDLE handle : {stream->StopEvent, stream->Progress, stream->Control}) {
        if (handle != nullptr) {
            CloseHandle(handle);
        }
    }
    FreeHeapObject(stream);
}

}  // namespace kestvox
