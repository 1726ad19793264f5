// user32: windows, dialogs, menus, resources, formatted text, message queues of threads.
#pragma once

#include "winbase.h"
#include "wingdi.h"

// Resources. A resource's type or name is a text, or a number in a pointer's guise.
#define MAKEINTRESOURCEW(number) (reinterpret_cast<LPWSTR>(static_cast<ULONG_PTR>(static_cast<WORD>(number))))
#define IS_INTRESOURCE(name) ((reinterpret_cast<ULONG_PTR>(name) >> 16) == 0)
#define RT_BITMAP MAKEINTRESOURCEW(2)
#define RT_DIALOG MAKEINTRESOURCEW(5)
#define RT_STRING MAKEINTRESOURCEW(6)
#define RT_MESSAGETABLE MAKEINTRESOURCEW(11)
#define RT_GROUP_CURSOR MAKEINTRESOURCEW(12)

#define IDC_ARROW MAKEINTRESOURCEW(32512)

// Buttons of a dialog
#define IDOK 1
#define IDCANCEL 2
#define IDYES 6
#define IDNO 7
#define IDHELP 9

// Message boxes
#define MB_YESNO 0x00000004
#define MB_ICONHAND 0x00000010
#define MB_ICONEXCLAMATION 0x00000030
#define MB_ICONINFORMATION 0x00000040
#define MB_DEFBUTTON2 0x00000100
#define MB_SYSTEMMODAL 0x00001000

// Window styles
#define WS_POPUP 0x80000000
#define WS_CHILD 0x40000000
#define WS_MINIMIZE 0x20000000
#define WS_VISIBLE 0x10000000
#define WS_DISABLED 0x08000000
#define WS_BORDER 0x00800000
#define WS_VSCROLL 0x00200000
#define WS_GROUP 0x00020000
#define WS_TABSTOP 0x00010000

#define WS_EX_NOPARENTNOTIFY 0x00000004

// Dialog styles
#define DS_SETFONT 0x0040

// Buttons
#define BS_PUSHBUTTON 0x00000000
#define BS_DEFPUSHBUTTON 0x00000001
#define BS_AUTOCHECKBOX 0x00000003
#define BS_GROUPBOX 0x00000007
#define BS_AUTORADIOBUTTON 0x00000009
#define BS_TYPEMASK 0x0000000F
#define BS_CENTER 0x00000300
#define BS_MULTILINE 0x00002000

#define BM_GETCHECK 0x00F0
#define BM_SETCHECK 0x00F1
#define BM_CLICK 0x00F5

#define BST_UNCHECKED 0x0000
#define BST_CHECKED 0x0001

#define BN_CLICKED 0

// Edits
#define ES_AUTOHSCROLL 0x0080
#define ES_READONLY 0x0800

#define EM_SETSEL 0x00B1
#define EM_LIMITTEXT 0x00C5
#define EM_SETMARGINS 0x00D3
#define EC_LEFTMARGIN 0x0001
#define EC_RIGHTMARGIN 0x0002

#define EN_KILLFOCUS 0x0200
#define EN_CHANGE 0x0300

// Statics
#define SS_LEFT 0x00000000
#define SS_CENTER 0x00000001
#define SS_RIGHT 0x00000002
#define SS_BITMAP 0x0000000E
#define SS_TYPEMASK 0x0000001F
#define SS_SUNKEN 0x00001000

// Combo boxes
#define CBS_DROPDOWNLIST 0x0003

#define CB_ADDSTRING 0x0143
#define CB_GETCOUNT 0x0146
#define CB_GETCURSEL 0x0147
#define CB_GETLBTEXT 0x0148
#define CB_GETLBTEXTLEN 0x0149
#define CB_RESETCONTENT 0x014B
#define CB_SETCURSEL 0x014E
#define CB_ERR (-1)

#define CBN_SELCHANGE 1

// Messages
#define WM_NULL 0x0000
#define WM_CREATE 0x0001
#define WM_DESTROY 0x0002
#define WM_SETFOCUS 0x0007
#define WM_KILLFOCUS 0x0008
#define WM_SETTEXT 0x000C
#define WM_GETTEXT 0x000D
#define WM_NEXTDLGCTL 0x0028
#define WM_SETFONT 0x0030
#define WM_GETFONT 0x0031
#define WM_NOTIFY 0x004E
#define WM_HELP 0x0053
#define WM_NCCREATE 0x0081
#define WM_NCDESTROY 0x0082
#define WM_GETDLGCODE 0x0087
#define WM_KEYFIRST 0x0100
#define WM_KEYDOWN 0x0100
#define WM_KEYUP 0x0101
#define WM_CHAR 0x0102
#define WM_SYSKEYDOWN 0x0104
#define WM_KEYLAST 0x0108
#define WM_INITDIALOG 0x0110
#define WM_COMMAND 0x0111
#define WM_HSCROLL 0x0114
#define WM_MOUSEMOVE 0x0200
#define WM_LBUTTONDOWN 0x0201
#define WM_LBUTTONUP 0x0202
#define WM_RBUTTONDOWN 0x0204
#define WM_RBUTTONUP 0x0205
#define WM_CAPTURECHANGED 0x0215
#define WM_USER 0x0400
#define WM_APP 0x8000

#define DM_GETDEFID (WM_USER + 0)
#define DM_SETDEFID (WM_USER + 1)
#define DC_HASDEFID 0x534B

#define DLGC_WANTARROWS 0x0001
#define DLGC_HASSETSEL 0x0008
#define DLGC_DEFPUSHBUTTON 0x0010
#define DLGC_UNDEFPUSHBUTTON 0x0020
#define DLGC_RADIOBUTTON 0x0040
#define DLGC_STATIC 0x0100
#define DLGC_BUTTON 0x2000

// Keys
#define VK_TAB 0x09
#define VK_RETURN 0x0D
#define VK_SHIFT 0x10
#define VK_ESCAPE 0x1B
#define VK_SPACE 0x20
#define VK_PRIOR 0x21
#define VK_NEXT 0x22
#define VK_END 0x23
#define VK_HOME 0x24
#define VK_LEFT 0x25
#define VK_UP 0x26
#define VK_RIGHT 0x27
#define VK_DOWN 0x28
#define VK_SUBTRACT 0x6D
#define VK_F10 0x79

#define MK_LBUTTON 0x0001
#define MK_RBUTTON 0x0002

// Where a window's own words lie
#define GWL_STYLE (-16)
#define GWLP_WNDPROC (-4)
#define GWLP_USERDATA (-21)
#define GWLP_ID (-12)
#define DWLP_MSGRESULT 0
#define DWLP_DLGPROC (DWLP_MSGRESULT + sizeof(LRESULT))
#define DWLP_USER (DWLP_DLGPROC + sizeof(DLGPROC))
#define DLGWINDOWEXTRA (static_cast<int>(DWLP_USER + sizeof(LONG_PTR)))

#define GW_HWNDNEXT 2
#define GW_CHILD 5

#define HWND_TOP (reinterpret_cast<HWND>(static_cast<LONG_PTR>(0)))
#define HWND_TOPMOST (reinterpret_cast<HWND>(static_cast<LONG_PTR>(-1)))
#define HWND_NOTOPMOST (reinterpret_cast<HWND>(static_cast<LONG_PTR>(-2)))

#define SWP_NOSIZE 0x0001
#define SWP_NOMOVE 0x0002
#define SWP_NOZORDER 0x0004
#define SWP_NOACTIVATE 0x0010
#define SWP_SHOWWINDOW 0x0040

#define SW_HIDE 0
#define SW_SHOW 5
#define SW_MINIMIZE 6
#define SW_RESTORE 9

#define PM_NOREMOVE 0x0000
#define PM_REMOVE 0x0001

// Menus
#define MF_BYPOSITION 0x00000400
#define MF_SEPARATOR 0x00000800
#define MF_ENABLED 0x00000000
#define MF_GRAYED 0x00000001
#define MF_DISABLED 0x00000002
#define MF_UNCHECKED 0x00000000
#define MF_CHECKED 0x00000008
#define MF_STRING 0x00000000

#define TPM_RIGHTBUTTON 0x0002

// Help
#define HELP_CONTEXT 0x0001
#define HELP_QUIT 0x0002
#define HELP_CONTEXTPOPUP 0x0008
#define HELPINFO_WINDOW 0x0001

// Power states as an installable driver is told of them
#define PWR_SUSPENDREQUEST 1
#define PWR_SUSPENDRESUME 2
#define PWR_CRITICALRESUME 3

struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};
using LPMSG = MSG*;

using WNDPROC = LRESULT(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);
using DLGPROC = INT_PTR(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);
using WNDENUMPROC = BOOL(CALLBACK*)(HWND, LPARAM);

struct CREATESTRUCTW {
    LPVOID lpCreateParams;
    HINSTANCE hInstance;
    HMENU hMenu;
    HWND hwndParent;
    int cy;
    int cx;
    int y;
    int x;
    LONG style;
    LPCWSTR lpszName;
    LPCWSTR lpszClass;
    DWORD dwExStyle;
};

struct NMHDR {
    HWND hwndFrom;
    UINT_PTR idFrom;
    UINT code;
};

// 28 bytes on 32-bit Windows.
struct HELPINFO {
    UINT cbSize;
    int iContextType;
    int iCtrlId;
    HANDLE hItemHandle;
    DWORD_PTR dwContextId;
    POINT MousePos;
};

#pragma GCC visibility push(default)
extern "C" {

// Resources
int WINAPI LoadStringW(HINSTANCE hInstance, UINT uID, LPWSTR lpBuffer, int cchBufferMax);
HBITMAP WINAPI LoadBitmapW(HINSTANCE hInstance, LPCWSTR lpBitmapName);
HCURSOR WINAPI LoadCursorW(HINSTANCE hInstance, LPCWSTR lpCursorName);

// Text
int WINAPIV wsprintfW(LPWSTR, LPCWSTR, ...);

// Classes and windows
int WINAPI GetClassNameW(HWND hWnd, LPWSTR lpClassName, int nMaxCount);
HWND WINAPI CreateWindowExW(DWORD dwExStyle, LPCWSTR lpClassName, LPCWSTR lpWindowName, DWORD dwStyle, int X,
                            int Y, int nWidth, int nHeight, HWND hWndParent, HMENU hMenu, HINSTANCE hInstance,
                            LPVOID lpParam);
BOOL WINAPI DestroyWindow(HWND hWnd);
LRESULT WINAPI DefWindowProcW(HWND hWnd, UINT Msg, WPARAM wParam, LPARAM lParam);
LRESULT WINAPI CallWindowProcW(WNDPROC lpPrevWndFunc, HWND hWnd, UINT Msg, WPARAM wParam, LPARAM lParam);

BOOL WINAPI IsWindow(HWND hWnd);
HWND WINAPI GetDesktopWindow();
HWND WINAPI GetParent(HWND hWnd);
HWND WINAPI GetWindow(HWND hWnd, UINT uCmd);
BOOL WINAPI IsChild(HWND hWndParent, HWND hWnd);
BOOL WINAPI EnumThreadWindows(DWORD dwThreadId, WNDENUMPROC lpfn, LPARAM lParam);
HWND WINAPI FindWindowW(LPCWSTR lpClassName, LPCWSTR lpWindowName);

LONG_PTR WINAPI GetWindowLongPtrW(HWND hWnd, int nIndex);
LONG_PTR WINAPI SetWindowLongPtrW(HWND hWnd, int nIndex, LONG_PTR dwNewLong);
int WINAPI GetWindowTextW(HWND hWnd, LPWSTR lpString, int nMaxCount);
BOOL WINAPI SetWindowTextW(HWND hWnd, LPCWSTR lpString);

BOOL WINAPI ShowWindow(HWND hWnd, int nCmdShow);
BOOL WINAPI EnableWindow(HWND hWnd, BOOL bEnable);
BOOL WINAPI IsWindowEnabled(HWND hWnd);
BOOL WINAPI IsWindowVisible(HWND hWnd);
BOOL WINAPI IsIconic(HWND hWnd);
BOOL WINAPI SetWindowPos(HWND hWnd, HWND hWndInsertAfter, int X, int Y, int cx, int cy, UINT uFlags);
HWND WINAPI SetFocus(HWND hWnd);
HWND WINAPI GetFocus();

// Rectangles
BOOL WINAPI GetWindowRect(HWND hWnd, LPRECT lpRect);
BOOL WINAPI GetClientRect(HWND hWnd, LPRECT lpRect);
BOOL WINAPI ClientToScreen(HWND hWnd, LPPOINT lpPoint);
BOOL WINAPI ScreenToClient(HWND hWnd, LPPOINT lpPoint);
int WINAPI MapWindowPoints(HWND hWndFrom, HWND hWndTo, LPPOINT lpPoints, UINT cPoints);
BOOL WINAPI PtInRect(const RECT* lprc, POINT pt);
BOOL WINAPI InvalidateRect(HWND hWnd, const RECT* lpRect, BOOL bErase);
BOOL WINAPI UpdateWindow(HWND hWnd);

// Mouse, keyboard, cursor
HWND WINAPI SetCapture(HWND hWnd);
BOOL WINAPI ReleaseCapture();
HWND WINAPI GetCapture();
HCURSOR WINAPI SetCursor(HCURSOR hCursor);
HCURSOR WINAPI GetCursor();
BOOL WINAPI DestroyCursor(HCURSOR hCursor);
BOOL WINAPI GetCursorPos(LPPOINT lpPoint);
BOOL WINAPI SetCursorPos(int X, int Y);
SHORT WINAPI GetKeyState(int nVirtKey);
BOOL WINAPI GetKeyboardState(BYTE* lpKeyState);
BOOL WINAPI SetKeyboardState(BYTE* lpKeyState);

// Messages
LRESULT WINAPI SendMessageW(HWND hWnd, UINT Msg, WPARAM wParam, LPARAM lParam);
BOOL WINAPI PostMessageW(HWND hWnd, UINT Msg, WPARAM wParam, LPARAM lParam);
BOOL WINAPI PostThreadMessageW(DWORD idThread, UINT Msg, WPARAM wParam, LPARAM lParam);
BOOL WINAPI PeekMessageW(LPMSG lpMsg, HWND hWnd, UINT wMsgFilterMin, UINT wMsgFilterMax, UINT wRemoveMsg);
BOOL WINAPI GetMessageW(LPMSG lpMsg, HWND hWnd, UINT wMsgFilterMin, UINT wMsgFilterMax);
LRESULT WINAPI DispatchMessageW(const MSG* lpMsg);

// Dialogs
int WINAPI MessageBoxW(HWND hWnd, LPCWSTR lpText, LPCWSTR lpCaption, UINT uType);
LRESULT WINAPI DefDlgProcW(HWND hDlg, UINT Msg, WPARAM wParam, LPARAM lParam);
HWND WINAPI GetDlgItem(HWND hDlg, int nIDDlgItem);
BOOL WINAPI MapDialogRect(HWND hDlg, LPRECT lpRect);
int WINAPI GetDlgCtrlID(HWND hWnd);
LRESULT WINAPI SendDlgItemMessageW(HWND hDlg, int nIDDlgItem, UINT Msg, WPARAM wParam, LPARAM lParam);
UINT WINAPI GetDlgItemTextW(HWND hDlg, int nIDDlgItem, LPWSTR lpString, int cchMax);
BOOL WINAPI SetDlgItemTextW(HWND hDlg, int nIDDlgItem, LPCWSTR lpString);
BOOL WINAPI CheckDlgButton(HWND hDlg, int nIDButton, UINT uCheck);
UINT WINAPI IsDlgButtonChecked(HWND hDlg, int nIDButton);
HWND WINAPI GetNextDlgTabItem(HWND hDlg, HWND hCtl, BOOL bPrevious);
HWND WINAPI GetNextDlgGroupItem(HWND hDlg, HWND hCtl, BOOL bPrevious);

// Menus
HMENU WINAPI CreatePopupMenu();
BOOL WINAPI DestroyMenu(HMENU hMenu);
BOOL WINAPI AppendMenuW(HMENU hMenu, UINT uFlags, UINT_PTR uIDNewItem, LPCWSTR lpNewItem);
UINT WINAPI GetMenuState(HMENU hMenu, UINT uId, UINT uFlags);
int WINAPI GetMenuItemCount(HMENU hMenu);
int WINAPI GetMenuStringW(HMENU hMenu, UINT uIDItem, LPWSTR lpString, int cchMax, UINT flags);
BOOL WINAPI TrackPopupMenu(HMENU hMenu, UINT uFlags, int x, int y, int nReserved, HWND hWnd,
                           const RECT* prcRect);

// Help
BOOL WINAPI WinHelpW(HWND hWndMain, LPCWSTR lpszHelp, UINT uCommand, ULONG_PTR dwData);

}  // extern "C"
#pragma GCC visibility pop
