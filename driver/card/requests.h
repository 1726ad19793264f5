// The kernel driver's requests as functions: each is one call of CardRequest. TRUE on success unless
// said otherwise; a failed read leaves the caller's value untouched.
#pragma once

#include "card/card_handle.h"

namespace kestvox {

// Transfer of the bound channel
BOOL BeginBuffer(CardHandle* handle);
BOOL MapBuffer(CardHandle* handle, void* data, DWORD length);
BOOL SetBufferCookie(CardHandle* handle, ULONG_PTR cookie);
BOOL QueueBuffer(CardHandle* handle, DWORD directMode);
BOOL StartTransfer(CardHandle* handle);
BOOL StopTransfer(CardHandle* handle);
BOOL FlushBuffers(CardHandle* handle);
BOOL ArmChannel(CardHandle* handle);
BOOL DisarmChannel(CardHandle* handle);
BOOL AcquireChannel(CardHandle* handle);
BOOL ReleaseChannel(CardHandle* handle);

// Position of the bound channel in sample frames since it started; NoPosition when it cannot be read.
inline constexpr DWORD NoPosition = 0xFFFFFFFF;
DWORD GetPosition(CardHandle* handle);

// From now on every finished buffer of the channel queues a call of `routine` to the calling thread,
// with the buffer's cookie as its first argument; null ends that.
using CompletionRoutine = void(CALLBACK*)(ULONG_PTR cookie, ULONG_PTR, ULONG_PTR);
BOOL SetCompletionRoutine(CardHandle* handle, CompletionRoutine routine);

// The kernel waits that many microseconds.
BOOL Stall(CardHandle* handle, DWORD microseconds);

// Whether the selected external clock has failed since the last call; reading clears it. FALSE also
// when the card cannot be asked.
BOOL TakeClockFault(CardHandle* handle);

// Registers are 8 bits wide. A write replaces only the bits under `mask`, atomically in the kernel.
BOOL ReadCardRegister(CardHandle* handle, DWORD reg, RegisterSpace space, DWORD* value);
BOOL WriteCardRegister(CardHandle* handle, DWORD reg, RegisterSpace space, DWORD value, DWORD mask);

// `size` is 1, 2 or 4 bytes at `offset` of the card's PCI configuration space.
BOOL ReadPciConfig(CardHandle* handle, DWORD offset, void* buffer, DWORD size);
BOOL WritePciConfig(CardHandle* handle, DWORD offset, const void* buffer, DWORD size);

// One page of NvramPageSize bytes, as stored.
BOOL ReadNvramPage(CardHandle* handle, DWORD page, BYTE* buffer);

BOOL SoftReset(CardHandle* handle);

// The card's device key below HKEY_LOCAL_MACHINE, through a borrowed handle. `size` in bytes.
// FALSE when no handle can be had or the kernel driver does not answer.
BOOL GetCardRegistryPath(CardRecord& card, WCHAR* buffer, DWORD size);

}  // namespace kestvox
