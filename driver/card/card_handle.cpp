#include "card/card_handle.h"

#include "card/heap.h"
#include "card/requests.h"

namespace kestvox {

namespace {

constexpr const WCHAR* DevicePathFormat = TEXT("\\\\.\\%s%lu");
constexpr const WCHAR* DeviceBaseName = TEXT("Kestrelvox");

HANDLE OpenDevice(DWORD ordinal) {
    WCHAR path[32];
    wsprintfW(path, DevicePathFormat, DeviceBaseName, ordinal);
    // No access is asked for: every request code is open to any access.
    return CreateFileW(path, 0, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                       FILE_FLAG_OVERLAPPED, nullptr);
}

BOOL BindHandle(CardHandle* handle, DWORD ordinal, DWORD channel) {
    const BindRequest request = {ordinal, channel};
    DWORD returned = 0;
    return CardRequest(handle, IOCTL_BIND_HANDLE, &request, sizeof request, nullptr, 0, &returned);
}

}  // namespace

MMRESULT OpenCardHandle(const CardRecord& card, DWORD channel, CardHandle** handle) {
    *handle = nullptr;
    CardHandle* opened = NewHeapObject<CardHandle>();
    if (opened == nullptr) {
        return MMSYSERR_NOMEM;
    }
    opened->FileHandle = OpenDevice(card.Ordinal);
    if (opened->FileHandle == INVALID_HANDLE_VALUE) {
        FreeHeapObject(opened);
        return MMSYSERR_NODRIVER;
    }
    opened->Overlapped.hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (opened->Overlapped.hEvent == nullptr) {
        CloseHandle(opened->FileHandle);
        FreeHeapObject(opened);
        return MMSYSERR_ERROR;
    }
    if (!BindHandle(opened, card.Ordinal, channel)) {
        CloseCardHandle(opened);
        return MMSYSERR_ALLOCATED;
    }
    if (channel != ControlChannel && !AcquireChannel(opened)) {
        CloseCardHandle(opened);
        return MMSYSERR_ERROR;
    }
    *handle = opened;
    return MMSYSERR_NOERROR;
}

void CloseCardHandle(CardHandle* handle) {
    if (handle == nullptr || handle->FileHandle == INVALID_HANDLE_VALUE) {
        return;
    }
    ReleaseChannel(handle);
    CloseHandle(handle->FileHandle);
    CloseHandle(handle->Overlapped.hEvent);
    FreeHeapObject(handle);
}

BOOL CardRequest(CardHandle* handle, DWORD code, const void* input, DWORD inputLength, void* output,
                 DWORD outputLength, DWORD* bytesReturned) {
    if (handle == nullptr || handle->FileHandle == INVALID_HANDLE_VALUE) {
        return FALSE;
    }
    if (DeviceIoControl(handle->FileHandle, code, const_cast<void*>(input), inputLength, output, outputLength,
                        bytesReturned, &handle->Overlapped)) {
        return TRUE;
    }
    return GetLastError() == ERROR_IO_PENDING;
}

BorrowedHandle::BorrowedHandle(CardRecord& card) : loan_(FindStreamByCard(card)), handle_(loan_.Handle) {
    if (loan_.Lender == nullptr) {
        OpenCardHandle(card, ControlChannel, &handle_);
    }
}

BorrowedHandle::~BorrowedHandle() {
    if (loan_.Lender != nullptr) {
        ReturnLoan(loan_);
    } else {
        CloseCardHandle(handle_);
    }
}

}  // namespace kestvox
