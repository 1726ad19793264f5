// Structures and constants below the Win32 calls: text, GUIDs, security descriptors, critical sections,
// access rights, registry value types, wait status codes.
#pragma once

#include "windef.h"

#define TEXT_LITERAL_(quote) u##quote
#define TEXT(quote) TEXT_LITERAL_(quote)

struct GUID {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
    bool operator==(const GUID&) const = default;
};

#define DLL_PROCESS_DETACH 0
#define DLL_PROCESS_ATTACH 1
#define DLL_THREAD_ATTACH 2
#define DLL_THREAD_DETACH 3

#define STATUS_WAIT_0 (static_cast<DWORD>(0x00000000))
#define STATUS_ABANDONED_WAIT_0 (static_cast<DWORD>(0x00000080))
#define STATUS_USER_APC (static_cast<DWORD>(0x000000C0))
#define STATUS_PENDING (static_cast<DWORD>(0x00000103))

#define TLS_MINIMUM_AVAILABLE 64

// Access rights
#define READ_CONTROL 0x00020000
#define SYNCHRONIZE 0x00100000
#define STANDARD_RIGHTS_READ READ_CONTROL
#define STANDARD_RIGHTS_ALL 0x001F0000
#define GENERIC_READ 0x80000000
#define GENERIC_WRITE 0x40000000

#define FILE_SHARE_READ 0x00000001
#define FILE_SHARE_WRITE 0x00000002

// Registry
#define KEY_QUERY_VALUE 0x0001
#define KEY_SET_VALUE 0x0002
#define KEY_CREATE_SUB_KEY 0x0004
#define KEY_ENUMERATE_SUB_KEYS 0x0008
#define KEY_NOTIFY 0x0010
#define KEY_CREATE_LINK 0x0020
#define KEY_READ \
    ((STANDARD_RIGHTS_READ | KEY_QUERY_VALUE | KEY_ENUMERATE_SUB_KEYS | KEY_NOTIFY) & ~SYNCHRONIZE)
#define KEY_ALL_ACCESS                                                                                      \
    ((STANDARD_RIGHTS_ALL | KEY_QUERY_VALUE | KEY_SET_VALUE | KEY_CREATE_SUB_KEY | KEY_ENUMERATE_SUB_KEYS | \
      KEY_NOTIFY | KEY_CREATE_LINK) &                                                                       \
     ~SYNCHRONIZE)

#define REG_SZ 1
#define REG_EXPAND_SZ 2
#define REG_BINARY 3
#define REG_DWORD 4

// Event log
#define EVENTLOG_WARNING_TYPE 0x0002

// Heap
#define HEAP_ZERO_MEMORY 0x00000008

// Security. Everyone may open everything here; the descriptor is built and checked for form only.
#define SECURITY_DESCRIPTOR_REVISION 1
#define SE_DACL_PRESENT 0x0004
#define SE_DACL_DEFAULTED 0x0008

using PSID = void*;

struct ACL {
    BYTE AclRevision;
    BYTE Sbz1;
    WORD AclSize;
    WORD AceCount;
    WORD Sbz2;
};
using PACL = ACL*;

using SECURITY_DESCRIPTOR_CONTROL = WORD;

struct SECURITY_DESCRIPTOR {
    BYTE Revision;
    BYTE Sbz1;
    SECURITY_DESCRIPTOR_CONTROL Control;
    PSID Owner;
    PSID Group;
    PACL Sacl;
    PACL Dacl;
};
using PSECURITY_DESCRIPTOR = void*;

struct CRITICAL_SECTION {
    void* DebugInfo;
    LONG LockCount;
    LONG RecursionCount;
    HANDLE OwningThread;
    HANDLE LockSemaphore;
    ULONG_PTR SpinCount;
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;
