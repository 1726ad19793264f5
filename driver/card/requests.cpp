#include "card/requests.h"

namespace kestvox {

namespace {

constexpr DWORD RegisterWidth = 8;

BOOL Send(CardHandle* handle, DWORD code) {
    DWORD returned = 0;
    return CardRequest(handle, code, nullptr, 0, nullptr, 0, &returned);
}

template <typename T>
BOOL Send(CardHandle* handle, DWORD code, const T& input) {
    DWORD returned = 0;
    return CardRequest(handle, code, &input, sizeof input, nullptr, 0, &returned);
}

// An answer of one word: only a whole one counts, and only then is `*value` written.
BOOL ReadWord(CardHandle* handle, DWORD code, const void* input, DWORD inputLength, DWORD* value) {
    DWORD answer = 0;
    DWORD returned = 0;
    if (!CardRequest(handle, code, input, inputLength, &answer, sizeof answer, &returned) ||
        returned != sizeof answer) {
        return FALSE;
    }
    *value = answer;
    return TRUE;
}

}  // namespace

BOOL BeginBuffer(CardHandle* handle) {
    return Send(handle, IOCTL_BEGIN_BUFFER);
}

BOOL MapBuffer(CardHandle* handle, void* data, DWORD length) {
    DWORD returned = 0;
    return CardRequest(handle, IOCTL_MAP_BUFFER, nullptr, 0, data, length, &returned);
}

BOOL SetBufferCookie(CardHandle* handle, ULONG_PTR cookie) {
    return Send(handle, IOCTL_SET_BUFFER_COOKIE, cookie);
}

BOOL QueueBuffer(CardHandle* handle, DWORD directMode) {
    return Send(handle, IOCTL_QUEUE_BUFFER, directMode);
}

BOOL StartTransfer(CardHandle* handle) {
    return Send(handle, IOCTL_START_TRANSFER);
}

BOOL StopTransfer(CardHandle* handle) {
    return Send(handle, IOCTL_STOP_TRANSFER);
}

BOOL FlushBuffers(CardHandle* handle) {
    return Send(handle, IOCTL_FLUSH_BUFFERS);
}

BOOL ArmChannel(CardHandle* handle) {
    return Send(handle, IOCTL_ARM_CHANNEL);
}

BOOL DisarmChannel(CardHandle* handle) {
    return Send(handle, IOCTL_DISARM_CHANNEL);
}

BOOL AcquireChannel(CardHandle* handle) {
    return Send(handle, IOCTL_ACQUIRE_CHANNEL);
}

BOOL ReleaseChannel(CardHandle* handle) {
    return Send(handle, IOCTL_RELEASE_CHANNEL);
}

DWORD GetPosition(CardHandle* handle) {
    DWORD position = NoPosition;
    ReadWord(handle, IOCTL_GET_POSITION, nullptr, 0, &position);
    return position;
}

BOOL SetCompletionRoutine(CardHandle* handle, CompletionRoutine routine) {
    return Send(handle, IOCTL_SET_COMPLETION_ROUTINE, reinterpret_cast<ULONG_PTR>(routine));
}

BOOL Stall(CardHandle* handle, DWORD microseconds) {
    return Send(handle, IOCTL_STALL, microseconds);
}

BOOL TakeClockFault(CardHandle* handle) {
    DWORD fault = 0;
    ReadWord(handle, IOCTL_READ_CLOCK_FAULT, nullptr, 0, &fault);
    return fault != 0;
}

BOOL ReadCardRegister(CardHandle* handle, DWORD reg, RegisterSpace space, DWORD* value) {
    const RegisterRequest request = {reg, RegisterWidth, space, 0, 0};
    return ReadWord(handle, IOCTL_READ_REGISTER, &request, sizeof request, value);
}

BOOL WriteCardRegister(CardHandle* handle, DWORD reg, RegisterSpace space, DWORD value, DWORD mask) {
    const RegisterRequest request = {reg, RegisterWidth, space, value, mask};
    return Send(handle, IOCTL_WRITE_REGISTER, request);
}

BOOL ReadPciConfig(CardHandle* handle, DWORD offset, void* buffer, DWORD size) {
    DWORD returned = 0;
    return CardRequest(handle, IOCTL_READ_PCI_CONFIG, &offset, sizeof offset, buffer, size, &returned) &&
           returned == size;
}

BOOL WritePciConfig(CardHandle* handle, DWORD offset, const void* buffer, DWORD size) {
    DWORD returned = 0;
    // Direct input: the bytes to write travel as the request's output buffer.
    return CardRequest(handle, IOCTL_WRITE_PCI_CONFIG, &offset, sizeof offset, const_cast<void*>(buffer),
                       size, &returned);
}

BOOL ReadNvramPage(CardHandle* handle, DWORD page, BYTE* buffer) {
    DWORD returned = 0;
    return CardRequest(handle, IOCTL_READ_NVRAM_PAGE, &page, sizeof page, buffer, NvramPageSize, &returned);
}

BOOL SoftReset(CardHandle* handle) {
    return Send(handle, IOCTL_SOFT_RESET);
}

BOOL GetCardRegistryPath(CardRecord& card, WCHAR* buffer, DWORD size) {
    BorrowedHandle handle(card);
    DWORD returned = 0;
    return CardRequest(handle.Get(), IOCTL_GET_REGISTRY_PATH, nullptr, 0, buffer, size, &returned);
}

}  // namespace kestvox
