// kernel32 and advapi32 (without the registry): files, waitable objects, threads, memory, modules, text,
// event log.
#pragma once

#include <cstdarg>

#include "windef.h"
#include "winerror.h"
#include "winnt.h"

#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1)))
#define INFINITE 0xFFFFFFFF

#define WAIT_OBJECT_0 (STATUS_WAIT_0)
#define WAIT_ABANDONED (STATUS_ABANDONED_WAIT_0)
#define WAIT_IO_COMPLETION STATUS_USER_APC
#define WAIT_TIMEOUT 258
#define WAIT_FAILED (static_cast<DWORD>(0xFFFFFFFF))

#define OPEN_EXISTING 3
#define FILE_FLAG_OVERLAPPED 0x40000000

#define THREAD_PRIORITY_TIME_CRITICAL 15

#define TLS_OUT_OF_INDEXES (static_cast<DWORD>(0xFFFFFFFF))

#define GMEM_SHARE 0x2000

#define FORMAT_MESSAGE_IGNORE_INSERTS 0x00000200
#define FORMAT_MESSAGE_FROM_HMODULE 0x00000800

struct OVERLAPPED {
    ULONG_PTR Internal;
    ULONG_PTR InternalHigh;
    DWORD Offset;
    DWORD OffsetHigh;
    HANDLE hEvent;
};
using LPOVERLAPPED = OVERLAPPED*;

struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle;
};
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

using LPTHREAD_START_ROUTINE = DWORD(WINAPI*)(LPVOID);
using PAPCFUNC = void(CALLBACK*)(ULONG_PTR);

#pragma GCC visibility push(default)
extern "C" {

DWORD WINAPI GetLastError();
void WINAPI SetLastError(DWORD dwErrCode);

// Files and devices
HANDLE WINAPI CreateFileW(LPCWSTR lpFileName, DWORD dwDesiredAccess, DWORD dwShareMode,
                          LPSECURITY_ATTRIBUTES lpSecurityAttributes, DWORD dwCreationDisposition,
                          DWORD dwFlagsAndAttributes, HANDLE hTemplateFile);
BOOL WINAPI DeviceIoControl(HANDLE hDevice, DWORD dwIoControlCode, LPVOID lpInBuffer, DWORD nInBufferSize,
                            LPVOID lpOutBuffer, DWORD nOutBufferSize, LPDWORD lpBytesReturned,
                            LPOVERLAPPED lpOverlapped);
BOOL WINAPI CloseHandle(HANDLE hObject);

// Waitable objects
HANDLE WINAPI CreateEventW(LPSECURITY_ATTRIBUTES lpEventAttributes, BOOL bManualReset, BOOL bInitialState,
                           LPCWSTR lpName);
BOOL WINAPI SetEvent(HANDLE hEvent);
HANDLE WINAPI CreateMutexW(LPSECURITY_ATTRIBUTES lpMutexAttributes, BOOL bInitialOwner, LPCWSTR lpName);
BOOL WINAPI ReleaseMutex(HANDLE hMutex);
DWORD WINAPI WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds);
DWORD WINAPI WaitForSingleObjectEx(HANDLE hHandle, DWORD dwMilliseconds, BOOL bAlertable);
DWORD WINAPI SleepEx(DWORD dwMilliseconds, BOOL bAlertable);
void WINAPI Sleep(DWORD dwMilliseconds);

// Threads
HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES lpThreadAttributes, SIZE_T dwStackSize,
                           LPTHREAD_START_ROUTINE lpStartAddress, LPVOID lpParameter, DWORD dwCreationFlags,
                           LPDWORD lpThreadId);
BOOL WINAPI SetThreadPriority(HANDLE hThread, int nPriority);
HANDLE WINAPI GetCurrentThread();
DWORD WINAPI GetCurrentThreadId();
DWORD WINAPI GetCurrentProcessId();
DWORD WINAPI GetVersion();
DWORD WINAPI QueueUserAPC(PAPCFUNC pfnAPC, HANDLE hThread, ULONG_PTR dwData);

DWORD WINAPI TlsAlloc();
BOOL WINAPI TlsFree(DWORD dwTlsIndex);
LPVOID WINAPI TlsGetValue(DWORD dwTlsIndex);
BOOL WINAPI TlsSetValue(DWORD dwTlsIndex, LPVOID lpTlsValue);

void WINAPI InitializeCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
void WINAPI DeleteCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
void WINAPI EnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
void WINAPI LeaveCriticalSection(LPCRITICAL_SECTION lpCriticalSection);

// Memory
HGLOBAL WINAPI GlobalAlloc(UINT uFlags, SIZE_T dwBytes);
HGLOBAL WINAPI GlobalReAlloc(HGLOBAL hMem, SIZE_T dwBytes, UINT uFlags);
HGLOBAL WINAPI GlobalFree(HGLOBAL hMem);
LPVOID WINAPI GlobalLock(HGLOBAL hMem);
BOOL WINAPI GlobalUnlock(HGLOBAL hMem);
HANDLE WINAPI GetProcessHeap();
LPVOID WINAPI HeapAlloc(HANDLE hHeap, DWORD dwFlags, SIZE_T dwBytes);
BOOL WINAPI HeapFree(HANDLE hHeap, DWORD dwFlags, LPVOID lpMem);
BOOL WINAPI IsBadReadPtr(const void* lp, UINT_PTR ucb);

// Modules
HMODULE WINAPI LoadLibraryW(LPCWSTR lpLibFileName);
BOOL WINAPI FreeLibrary(HMODULE hLibModule);
FARPROC WINAPI GetProcAddress(HMODULE hModule, LPCSTR lpProcName);
BOOL WINAPI DisableThreadLibraryCalls(HMODULE hLibModule);

// Text
int WINAPI lstrlenW(LPCWSTR lpString);
int WINAPI lstrcmpW(LPCWSTR lpString1, LPCWSTR lpString2);
int WINAPI lstrcmpiW(LPCWSTR lpString1, LPCWSTR lpString2);
LPWSTR WINAPI lstrcpyW(LPWSTR lpString1, LPCWSTR lpString2);
LPWSTR WINAPI lstrcpynW(LPWSTR lpString1, LPCWSTR lpString2, int iMaxLength);
LPWSTR WINAPI lstrcatW(LPWSTR lpString1, LPCWSTR lpString2);
DWORD WINAPI FormatMessageW(DWORD dwFlags, LPCVOID lpSource, DWORD dwMessageId, DWORD dwLanguageId,
                            LPWSTR lpBuffer, DWORD nSize, va_list* Arguments);

// Security and the event log (advapi32)
BOOL WINAPI InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR pSecurityDescriptor, DWORD dwRevision);
BOOL WINAPI SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR pSecurityDescriptor, BOOL bDaclPresent, PACL pDacl,
                                      BOOL bDaclDefaulted);
HANDLE WINAPI RegisterEventSourceW(LPCWSTR lpUNCServerName, LPCWSTR lpSourceName);
BOOL WINAPI ReportEventW(HANDLE hEventLog, WORD wType, WORD wCategory, DWORD dwEventID, PSID lpUserSid,
                         WORD wNumStrings, DWORD dwDataSize, LPCWSTR* lpStrings, LPVOID lpRawData);
BOOL WINAPI DeregisterEventSource(HANDLE hEventLog);

}  // extern "C"
#pragma GCC visibility pop
