// Property sheets (comctl32).
#pragma once

#include "windows.h"

struct PSP;
using HPROPSHEETPAGE = PSP*;

struct PROPSHEETPAGEW;

using LPFNPSPCALLBACKW = UINT(CALLBACK*)(HWND window, UINT message, PROPSHEETPAGEW* page);

// Page flags
#define PSP_USETITLE 0x00000008
#define PSP_HASHELP 0x00000020
#define PSP_USECALLBACK 0x00000080

// Messages of a page's callback
#define PSPCB_CREATE 2

// The classic page, 40 bytes on 32-bit Windows.
struct PROPSHEETPAGEW {
    DWORD dwSize;
    DWORD dwFlags;
    HINSTANCE hInstance;
    LPCWSTR pszTemplate;
    LPCWSTR pszIcon;
    LPCWSTR pszTitle;
    DLGPROC pfnDlgProc;
    LPARAM lParam;
    LPFNPSPCALLBACKW pfnCallback;
    UINT* pcRefParent;
};
using LPCPROPSHEETPAGEW = const PROPSHEETPAGEW*;
#define PROPSHEETPAGEW_V1_SIZE (sizeof(PROPSHEETPAGEW))

// Sheet flags
#define PSH_HASHELP 0x00000200

// The classic header, 40 bytes on 32-bit Windows.
struct PROPSHEETHEADERW {
    DWORD dwSize;
    DWORD dwFlags;
    HWND hwndParent;
    HINSTANCE hInstance;
    LPCWSTR pszIcon;
    LPCWSTR pszCaption;
    UINT nPages;
    UINT nStartPage;
    HPROPSHEETPAGE* phpage;
    LPVOID pfnCallback;
};
using LPCPROPSHEETHEADERW = const PROPSHEETHEADERW*;
#define PROPSHEETHEADERW_V1_SIZE (sizeof(PROPSHEETHEADERW))

// Notifications to a page
#define PSN_FIRST (static_cast<UINT>(-200))
#define PSN_SETACTIVE (PSN_FIRST - 0)
#define PSN_KILLACTIVE (PSN_FIRST - 1)
#define PSN_APPLY (PSN_FIRST - 2)
#define PSN_RESET (PSN_FIRST - 3)
#define PSN_HELP (PSN_FIRST - 5)
#define PSN_QUERYCANCEL (PSN_FIRST - 9)

struct PSHNOTIFY {
    NMHDR hdr;
    LPARAM lParam;  // PSN_APPLY, PSN_RESET: whether the sheet closes
};

#define PSNRET_NOERROR 0
#define PSNRET_INVALID_NOCHANGEPAGE 2

// Messages to a sheet
#define PSM_SETCURSEL (WM_USER + 101)
#define PSM_CHANGED (WM_USER + 104)
#define PSM_RESTARTWINDOWS (WM_USER + 105)
#define PSM_QUERYSIBLINGS (WM_USER + 108)
#define PSM_PRESSBUTTON (WM_USER + 113)
#define PSM_GETTABCONTROL (WM_USER + 116)
#define PSM_GETCURRENTPAGEHWND (WM_USER + 118)

// Buttons of PSM_PRESSBUTTON
#define PSBTN_OK 3
#define PSBTN_APPLYNOW 4
#define PSBTN_CANCEL 5
#define PSBTN_HELP 6

// Answers of PropertySheetW besides a positive number and -1
#define ID_PSRESTARTWINDOWS 0x2
#define ID_PSREBOOTSYSTEM (ID_PSRESTARTWINDOWS | 0x1)

#pragma GCC visibility push(default)
extern "C" {

HPROPSHEETPAGE WINAPI CreatePropertySheetPageW(LPCPROPSHEETPAGEW constPropSheetPagePointer);
BOOL WINAPI DestroyPropertySheetPage(HPROPSHEETPAGE);
INT_PTR WINAPI PropertySheetW(LPCPROPSHEETHEADERW);

}  // extern "C"
#pragma GCC visibility pop
