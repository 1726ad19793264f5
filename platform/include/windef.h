// Basic types, handle types and calling conventions.
#pragma once

#include <cstddef>
#include <cstdint>

#define WINAPI
#define WINAPIV
#define CALLBACK
#define TRUE 1
#define FALSE 0

#ifndef MAX_PATH
#define MAX_PATH 260
#endif

using BOOL = int;
using BYTE = uint8_t;
using WCHAR = char16_t;
using WORD = uint16_t;
using DWORD = uint32_t;
using SHORT = int16_t;
using UINT = unsigned int;
using LONG = int32_t;
using INT_PTR = intptr_t;
using UINT_PTR = uintptr_t;
using LONG_PTR = intptr_t;
using ULONG_PTR = uintptr_t;
using DWORD_PTR = uintptr_t;
using SIZE_T = size_t;

using LPVOID = void*;
using LPCVOID = const void*;
using LPBYTE = BYTE*;
using LPDWORD = DWORD*;
using LPUINT = UINT*;
using LPSTR = char*;
using LPCSTR = const char*;
using LPWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;

using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;

using HANDLE = void*;
using HGLOBAL = HANDLE;

// Each a type of its own, so that the compiler tells one kind of handle from another.
#define DECLARE_HANDLE(name) \
    struct name##__;         \
    using name = name##__*

DECLARE_HANDLE(HINSTANCE);
DECLARE_HANDLE(HWND);
DECLARE_HANDLE(HKEY);
DECLARE_HANDLE(HMENU);
DECLARE_HANDLE(HICON);
DECLARE_HANDLE(HBITMAP);
using HMODULE = HINSTANCE;
using HCURSOR = HICON;
using HGDIOBJ = void*;
using PHKEY = HKEY*;

using FARPROC = INT_PTR(WINAPI*)();

#define MAKEWORD(low, high) \
    (static_cast<WORD>(static_cast<BYTE>(low) | static_cast<WORD>(static_cast<BYTE>(high)) << 8))
#define MAKELONG(low, high) \
    (static_cast<LONG>(static_cast<WORD>(low) | static_cast<DWORD>(static_cast<WORD>(high)) << 16))
#define LOWORD(value) (static_cast<WORD>(static_cast<DWORD_PTR>(value) & 0xFFFF))
#define HIWORD(value) (static_cast<WORD>(static_cast<DWORD_PTR>(value) >> 16 & 0xFFFF))
#define LOBYTE(value) (static_cast<BYTE>(static_cast<DWORD_PTR>(value) & 0xFF))

#define MAKELPARAM(low, high) (static_cast<LPARAM>(static_cast<DWORD>(MAKELONG(low, high))))
#define MAKEWPARAM(low, high) (static_cast<WPARAM>(static_cast<DWORD>(MAKELONG(low, high))))

struct POINT {
    LONG x;
    LONG y;
};
using LPPOINT = POINT*;

struct SIZE {
    LONG cx;
    LONG cy;
};

struct RECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};
using LPRECT = RECT*;
