// Property sheets (comctl32).
#pragma once

#include "windows.h"

struct PSP;
using HPROPSHEETPAGE = PSP*;

struct PROPSHEETPAGEW;
struct PROPSHEETHEADERW;

using LPFNPSPCALLBACKW = UINT(CALLBACK*)(HWND window, UINT message, PROPSHEETPAGEW* page);
using PFNPROPSHEETCALLBACK = int(CALLBACK*)(HWND window, UINT message, LPARAM parameter);
using LPFNADDPROPSHEETPAGE = BOOL(CALLBACK*)(HPROPSHEETPAGE, LPARAM);

#define MAXPROPPAGES 100

// Page flags
#define PSP_DEFAULT 0x00000000
#define PSP_DLGINDIRECT 0x00000001
#define PSP_USEHICON 0x00000002
#define PSP_USEICONID 0x00000004
#define PSP_USETITLE 0x00000008
#define PSP_RTLREADING 0x00000010
#define PSP_HASHELP 0x00000020
#define PSP_USEREFPARENT 0x00000040
#define PSP_USECALLBACK 0x00000080
#define PSP_PREMATURE 0x00000400

// Messages of a page's callback
#define PSPCB_ADDREF 0
#define PSPCB_RELEASE 1
#define PSPCB_CREATE 2

// The classic page, 40 bytes on 32-bit Windows.
struct PROPSHEETPAGEW {
    DWORD dwSize;
    DWORD dwFlags;
    HINSTANCE hInstance;
    union {
        LPCWSTR pszTemplate;
        LPCDLGTEMPLATEW pResource;
    };
    union {
        HICON hIcon;
        LPCWSTR pszIcon;
    };
    LPCWSTR pszTitle;
    DLGPROC pfnDlgProc;
    LPARAM lParam;
    LPFNPSPCALLBACKW pfnCallback;
    UINT* pcRefParent;
};
using LPPROPSHEETPAGEW = PROPSHEETPAGEW*;
using LPCPROPSHEETPAGEW = const PROPSHEETPAGEW*;
#define PROPSHEETPAGEW_V1_SIZE (sizeof(PROPSHEETPAGEW))

// Sheet flags
#define PSH_DEFAULT 0x00000000
#define PSH_PROPTITLE 0x00000001
#define PSH_USEHICON 0x00000002
#define PSH_USEICONID 0x00000004
#define PSH_PROPSHEETPAGE 0x00000008
#define PSH_WIZARD 0x00000020
#define PSH_USEPSTARTPAGE 0x00000040
#define PSH_NOAPPLYNOW 0x00000080
#define PSH_USECALLBACK 0x00000100
#define PSH_HASHELP 0x00000200
#define PSH_MODELESS 0x00000400

// Messages of a sheet's callback
#define PSCB_INITIALIZED 1
#define PSCB_PRECREATE 2

// The classic header, 40 bytes on 32-bit Windows.
struct PROPSHEETHEADERW {
    DWORD dwSize;
    DWORD dwFlags;
    HWND hwndParent;
    HINSTANCE hInstance;
    union {
        HICON hIcon;
        LPCWSTR pszIcon;
    };
    LPCWSTR pszCaption;
    UINT nPages;
    union {
        UINT nStartPage;
        LPCWSTR pStartPage;
    };
    union {
        LPCPROPSHEETPAGEW ppsp;
        HPROPSHEETPAGE* phpage;
    };
    PFNPROPSHEETCALLBACK pfnCallback;
};
using LPPROPSHEETHEADERW = PROPSHEETHEADERW*;
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
using LPPSHNOTIFY = PSHNOTIFY*;

#define PSNRET_NOERROR 0
#define PSNRET_INVALID 1
#define PSNRET_INVALID_NOCHANGEPAGE 2

// Messages to a sheet
#define PSM_SETCURSEL (WM_USER + 101)
#define PSM_REMOVEPAGE (WM_USER + 102)
#define PSM_ADDPAGE (WM_USER + 103)
#define PSM_CHANGED (WM_USER + 104)
#define PSM_RESTARTWINDOWS (WM_USER + 105)
#define PSM_REBOOTSYSTEM (WM_USER + 106)
#define PSM_CANCELTOCLOSE (WM_USER + 107)
#define PSM_QUERYSIBLINGS (WM_USER + 108)
#define PSM_UNCHANGED (WM_USER + 109)
#define PSM_APPLY (WM_USER + 110)
#define PSM_PRESSBUTTON (WM_USER + 113)
#define PSM_SETCURSELID (WM_USER + 114)
#define PSM_GETTABCONTROL (WM_USER + 116)
#define PSM_ISDIALOGMESSAGE (WM_USER + 117)
#define PSM_GETCURRENTPAGEHWND (WM_USER + 118)
#define PSM_SETTITLEW (WM_USER + 120)

#define PropSheet_Changed(sheet, page) SendMessageW(sheet, PSM_CHANGED, reinterpret_cast<WPARAM>(page), 0)
#define PropSheet_UnChanged(sheet, page) SendMessageW(sheet, PSM_UNCHANGED, reinterpret_cast<WPARAM>(page), 0)
#define PropSheet_GetTabControl(sheet) reinterpret_cast<HWND>(SendMessageW(sheet, PSM_GETTABCONTROL, 0, 0))
#define PropSheet_GetCurrentPageHwnd(sheet) \
    reinterpret_cast<HWND>(SendMessageW(sheet, PSM_GETCURRENTPAGEHWND, 0, 0))
#define PropSheet_PressButton(sheet, button) \
    PostMessageW(sheet, PSM_PRESSBUTTON, static_cast<WPARAM>(button), 0)

// Buttons of PSM_PRESSBUTTON
#define PSBTN_BACK 0
#define PSBTN_NEXT 1
#define PSBTN_FINISH 2
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
