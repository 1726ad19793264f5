#include "stream/shadow_buffer.h"

#include <initializer_list>

#include "card/heap.h"
#include "card/locks.h"

namespace kestvox {

namespace {

constexpr DWORD LargestSize = 0xFFFFFFFC;  // in whole words

DWORD WholeWords(DWORD size) {
    return (size + 3) & ~static_cast<DWORD>(3);
}

void Push(ShadowBuffer** list, ShadowBuffer* buffer) {
    buffer->Next = *list;
    *list = buffer;
}

ShadowBuffer* Pop(ShadowBuffer** list) {
    ShadowBuffer* buffer = *list;
    if (buffer != nullptr) {
        *list = buffer->Next;
    }
    return buffer;
}

// The link that leads to the header's buffer; to the list's end when it has none.
ShadowBuffer** FindLink(ShadowBuffer** link, const WAVEHDR* header) {
    while (*link != nullptr && (*link)->Header != header) {
        link = &(*link)->Next;
    }
    return link;
}

void FreeBuffer(ShadowBuffer* buffer) {
    GlobalUnlock(buffer->Memory);
    GlobalFree(buffer->Memory);
    FreeHeapObject(buffer);
}

// Locks the block; frees it when that fails.
void* LockBlock(HGLOBAL memory) {
    void* data = memory != nullptr ? GlobalLock(memory) : nullptr;
    if (data == nullptr && memory != nullptr) {
        GlobalFree(memory);
    }
    return data;
}

// Gives the buffer another size. When it cannot have that, the buffer is freed: null.
ShadowBuffer* Resize(ShadowBuffer* buffer, DWORD size) {
    GlobalUnlock(buffer->Memory);
    HGLOBAL resized = GlobalReAlloc(buffer->Memory, WholeWords(size), 0);
    if (resized == nullptr) {
        GlobalFree(buffer->Memory);
        FreeHeapObject(buffer);
        return nullptr;
    }
    buffer->Memory = resized;
    buffer->Data = LockBlock(resized);
    if (buffer->Data == nullptr) {
        FreeHeapObject(buffer);
        return nullptr;
    }
    return buffer;
}

ShadowBuffer* Allocate(DWORD size) {
    HGLOBAL memory = GlobalAlloc(GMEM_SHARE, WholeWords(size));
    void* data = LockBlock(memory);
    if (data == nullptr) {
        return nullptr;
    }
    ShadowBuffer* buffer = NewHeapObject<ShadowBuffer>();
    if (buffer == nullptr) {
        GlobalUnlock(memory);
        GlobalFree(memory);
        return nullptr;
    }
    buffer->Memory = memory;
    buffer->Data = data;
    return buffer;
}

ShadowBuffer* PopFree(StreamInstance* stream) {
    DriverLock lock;
    return Pop(&stream->FreeBuffers);
}

}  // namespace

void* AcquireShadowBuffer(StreamInstance* stream, WAVEHDR* header, DWORD size) {
    if (size > LargestSize) {
        return nullptr;
    }
    ShadowBuffer* buffer = PopFree(stream);
    if (buffer != nullptr && buffer->Size != size) {
        buffer = Resize(buffer, size);
    }
    if (buffer == nullptr) {
        buffer = Allocate(size);
    }
    if (buffer == nullptr) {
        return nullptr;
    }
    buffer->Header = header;
    buffer->Size = size;
    DriverLock lock;
    Push(&stream->BusyBuffers, buffer);
    return buffer->Data;
}

ShadowBuffer* LookupShadowBuffer(StreamInstance* stream, const WAVEHDR* header) {
    DriverLock lock;
    return *FindLink(&stream->BusyBuffers, header);
}

void ReleaseShadowBuffer(StreamInstance* stream, const WAVEHDR* header) {
    DriverLock lock;
    ShadowBuffer** link = FindLink(&stream->BusyBuffers, header);
    if (ShadowBuffer* buffer = *link) {
        *link = buffer->Next;
        Push(&stream->FreeBuffers, buffer);
    }
}

void FreeShadowBuffers(StreamInstance* stream) {
    while (ShadowBuffer* buffer = PopFree(stream)) {
        FreeBuffer(buffer);
    }
}

void FreeAllShadowBuffers(StreamInstance* stream) {
    for (ShadowBuffer** list : {&stream->FreeBuffers, &stream->BusyBuffers}) {
        while (ShadowBuffer* buffer = Pop(list)) {
            FreeBuffer(buffer);
        }
    }
}

}  // namespace kestvox
