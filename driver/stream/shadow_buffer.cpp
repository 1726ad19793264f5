#include "stream/shadow_buffer.h"

#include "card/heap.h"
#include "card/locks.h"

namespace kestvox {

namespace {

constexpr DWORD LargestSize = 0xFFFFFFFC;  // in whole words

// A buffer that holds nothing has memory, too.
DWORD WholeWords(DWORD size) {
    return size != 0 ? (size + 3) & ~static_cast<DWORD>(3) : 4;
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

void FreeBuffer(ShadowBuffer* buffer) {
    GlobalUnlock(buffer->Memory);
    GlobalFree(buffer->Memory);
    FreeHeapObject(buffer);
}

// Locks the memory and makes it the buffer's; memory that cannot be locked, or null, leaves it without any.
void SetMemory(ShadowBuffer* buffer, HGLOBAL memory) {
    buffer->Memory = memory;
    buffer->Data = memory != nullptr ? GlobalLock(memory) : nullptr;
    if (memory != nullptr && buffer->Data == nullptr) {
        GlobalFree(memory);
    }
}

void Resize(ShadowBuffer* buffer, DWORD size) {
    GlobalUnlock(buffer->Memory);
    HGLOBAL resized = GlobalReAlloc(buffer->Memory, WholeWords(size), 0);
    if (resized == nullptr) {
        GlobalFree(buffer->Memory);
    }
    SetMemory(buffer, resized);
}

void FreeList(ShadowBuffer* list) {
    while (ShadowBuffer* buffer = Pop(&list)) {
        FreeBuffer(buffer);
    }
}

}  // namespace

void TakeFreeBuffer(StreamInstance* stream, HeldHeader* held) {
    held->Shadow = Pop(&stream->FreeBuffers);
}

void* AcquireShadowBuffer(HeldHeader* held, DWORD size) {
    if (size > LargestSize) {
        return nullptr;
    }
    ShadowBuffer* buffer = held->Shadow != nullptr ? held->Shadow : NewHeapObject<ShadowBuffer>();
    held->Shadow = buffer;
    if (buffer == nullptr) {
        return nullptr;
    }
    if (buffer->Data != nullptr && buffer->Size != size) {
        Resize(buffer, size);
    }
    if (buffer->Data == nullptr) {
        SetMemory(buffer, GlobalAlloc(GMEM_SHARE, WholeWords(size)));
    }
    if (buffer->Data == nullptr) {
        FreeHeapObject(buffer);
        held->Shadow = nullptr;
        return nullptr;
    }
    buffer->Size = size;
    return buffer->Data;
}

void ReleaseShadowBuffer(StreamInstance* stream, HeldHeader* held) {
    if (held->Shadow != nullptr) {
        Push(&stream->FreeBuffers, held->Shadow);
        held->Shadow = nullptr;
    }
}

void FreeShadowBuffers(StreamInstance* stream) {
    ShadowBuffer* list = nullptr;
    {
        DriverLock lock;
        list = stream->FreeBuffers;
        stream->FreeBuffers = nullptr;
    }
    FreeList(list);
}

void FreeLastShadowBuffers(StreamInstance* stream) {
    FreeList(stream->FreeBuffers);
}

}  // namespace kestvox
