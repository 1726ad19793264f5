// The registry (advapi32). Answers are error codes; the last error is not set.
#pragma once

#include "winbase.h"

using REGSAM = DWORD;

#define HKEY_CLASSES_ROOT (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(static_cast<LONG>(0x80000000))))
#define HKEY_LOCAL_MACHINE (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(static_cast<LONG>(0x80000002))))

#pragma GCC visibility push(default)
extern "C" {

LONG WINAPI RegCreateKeyW(HKEY hKey, LPCWSTR lpSubKey, PHKEY phkResult);
LONG WINAPI RegOpenKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD ulOptions, REGSAM samDesired, PHKEY phkResult);
LONG WINAPI RegQueryValueExW(HKEY hKey, LPCWSTR lpValueName, LPDWORD lpReserved, LPDWORD lpType,
                             LPBYTE lpData, LPDWORD lpcbData);
LONG WINAPI RegSetValueExW(HKEY hKey, LPCWSTR lpValueName, DWORD Reserved, DWORD dwType, const BYTE* lpData,
                           DWORD cbData);
LONG WINAPI RegDeleteValueW(HKEY hKey, LPCWSTR lpValueName);
LONG WINAPI RegDeleteKeyW(HKEY hKey, LPCWSTR lpSubKey);
LONG WINAPI RegCloseKey(HKEY hKey);

}  // extern "C"
#pragma GCC visibility pop
