// comctl32: trackbar, tab control, tree view, image lists.
#pragma once

#include "windows.h"

// Notifications, with an NMHDR, that several controls send
#define NM_FIRST (0U - 0U)
#define NM_CLICK (NM_FIRST - 2)
#define NM_DBLCLK (NM_FIRST - 3)
#define NM_RETURN (NM_FIRST - 4)
#define NM_RCLICK (NM_FIRST - 5)
#define NM_SETFOCUS (NM_FIRST - 7)
#define NM_KILLFOCUS (NM_FIRST - 8)
#define NM_RELEASEDCAPTURE (NM_FIRST - 16)

#define SNDMSG SendMessageW

// Image lists
DECLARE_HANDLE(HIMAGELIST);

#define ILC_COLOR 0x00000000
#define ILC_MASK 0x00000001

// Trackbar. Tells its parent of movement with WM_HSCROLL or WM_VSCROLL and a TB_ code.
#define TRACKBAR_CLASSW TEXT("msctls_trackbar32")

#define TBS_AUTOTICKS 0x0001
#define TBS_VERT 0x0002
#define TBS_HORZ 0x0000
#define TBS_TOP 0x0004
#define TBS_BOTTOM 0x0000
#define TBS_BOTH 0x0008
#define TBS_NOTICKS 0x0010

#define TBM_GETPOS (WM_USER)
#define TBM_GETRANGEMIN (WM_USER + 1)
#define TBM_GETRANGEMAX (WM_USER + 2)
#define TBM_GETTIC (WM_USER + 3)
#define TBM_SETTIC (WM_USER + 4)
#define TBM_SETPOS (WM_USER + 5)
#define TBM_SETRANGE (WM_USER + 6)
#define TBM_SETRANGEMIN (WM_USER + 7)
#define TBM_SETRANGEMAX (WM_USER + 8)
#define TBM_CLEARTICS (WM_USER + 9)
#define TBM_GETNUMTICS (WM_USER + 16)
#define TBM_SETTICFREQ (WM_USER + 20)
#define TBM_SETPAGESIZE (WM_USER + 21)
#define TBM_GETPAGESIZE (WM_USER + 22)
#define TBM_SETLINESIZE (WM_USER + 23)
#define TBM_GETLINESIZE (WM_USER + 24)
#define TBM_GETTHUMBRECT (WM_USER + 25)
#define TBM_GETCHANNELRECT (WM_USER + 26)

#define TB_LINEUP 0
#define TB_LINEDOWN 1
#define TB_PAGEUP 2
#define TB_PAGEDOWN 3
#define TB_THUMBPOSITION 4
#define TB_THUMBTRACK 5
#define TB_TOP 6
#define TB_BOTTOM 7
#define TB_ENDTRACK 8

// Tab control
#define WC_TABCONTROLW TEXT("SysTabControl32")

#define TCS_SINGLELINE 0x0000
#define TCS_MULTILINE 0x0200

#define TCM_FIRST 0x1300
#define TCM_GETITEMCOUNT (TCM_FIRST + 4)
#define TCM_DELETEALLITEMS (TCM_FIRST + 9)
#define TCM_GETITEMRECT (TCM_FIRST + 10)
#define TCM_GETCURSEL (TCM_FIRST + 11)
#define TCM_SETCURSEL (TCM_FIRST + 12)
#define TCM_HITTEST (TCM_FIRST + 13)
#define TCM_ADJUSTRECT (TCM_FIRST + 40)
#define TCM_GETROWCOUNT (TCM_FIRST + 44)
#define TCM_GETITEMW (TCM_FIRST + 60)
#define TCM_SETITEMW (TCM_FIRST + 61)
#define TCM_INSERTITEMW (TCM_FIRST + 62)

#define TCIF_TEXT 0x0001
#define TCIF_PARAM 0x0008

#define TCHT_NOWHERE 0x0001
#define TCHT_ONITEMLABEL 0x0004

#define TCN_FIRST (0U - 550U)
#define TCN_SELCHANGE (TCN_FIRST - 1)
#define TCN_SELCHANGING (TCN_FIRST - 2)

struct TCITEMW {
    UINT mask;
    DWORD dwState;
    DWORD dwStateMask;
    LPWSTR pszText;
    int cchTextMax;  // in WCHARs, with the terminator
    int iImage;
    LPARAM lParam;
};
using LPTCITEMW = TCITEMW*;

struct TCHITTESTINFO {
    POINT pt;  // in client coordinates
    UINT flags;
};
using LPTCHITTESTINFO = TCHITTESTINFO*;

inline int TabCtrl_GetCurSel(HWND window) {
    return static_cast<int>(SNDMSG(window, TCM_GETCURSEL, 0, 0));
}
inline int TabCtrl_GetItemCount(HWND window) {
    return static_cast<int>(SNDMSG(window, TCM_GETITEMCOUNT, 0, 0));
}

// Tree view
#define WC_TREEVIEWW TEXT("SysTreeView32")

#define TVS_HASBUTTONS 0x0001
#define TVS_HASLINES 0x0002
#define TVS_LINESATROOT 0x0004
#define TVS_DISABLEDRAGDROP 0x0010
#define TVS_SHOWSELALWAYS 0x0020

DECLARE_HANDLE(HTREEITEM);

#define TVI_ROOT (reinterpret_cast<HTREEITEM>(static_cast<LONG_PTR>(-0x10000)))
#define TVI_FIRST (reinterpret_cast<HTREEITEM>(static_cast<LONG_PTR>(-0x0FFFF)))
#define TVI_LAST (reinterpret_cast<HTREEITEM>(static_cast<LONG_PTR>(-0x0FFFE)))
#define TVI_SORT (reinterpret_cast<HTREEITEM>(static_cast<LONG_PTR>(-0x0FFFD)))

// In place of an item's text: the parent is asked with TVN_GETDISPINFOW whenever it is needed.
#define LPSTR_TEXTCALLBACKW (reinterpret_cast<LPWSTR>(static_cast<LONG_PTR>(-1)))
#define LPSTR_TEXTCALLBACK LPSTR_TEXTCALLBACKW

#define TVIF_TEXT 0x0001
#define TVIF_IMAGE 0x0002
#define TVIF_PARAM 0x0004
#define TVIF_STATE 0x0008
#define TVIF_HANDLE 0x0010
#define TVIF_SELECTEDIMAGE 0x0020
#define TVIF_CHILDREN 0x0040

#define TVIS_SELECTED 0x0002
#define TVIS_DROPHILITED 0x0008
#define TVIS_BOLD 0x0010
#define TVIS_EXPANDED 0x0020
#define TVIS_EXPANDEDONCE 0x0040

#define TV_FIRST 0x1100
#define TVM_DELETEITEM (TV_FIRST + 1)
#define TVM_EXPAND (TV_FIRST + 2)
#define TVM_GETITEMRECT (TV_FIRST + 4)
#define TVM_GETCOUNT (TV_FIRST + 5)
#define TVM_GETINDENT (TV_FIRST + 6)
#define TVM_GETIMAGELIST (TV_FIRST + 8)
#define TVM_SETIMAGELIST (TV_FIRST + 9)
#define TVM_GETNEXTITEM (TV_FIRST + 10)
#define TVM_SELECTITEM (TV_FIRST + 11)
#define TVM_GETVISIBLECOUNT (TV_FIRST + 16)
#define TVM_HITTEST (TV_FIRST + 17)
#define TVM_ENSUREVISIBLE (TV_FIRST + 20)
#define TVM_GETITEMHEIGHT (TV_FIRST + 28)
#define TVM_GETITEMSTATE (TV_FIRST + 39)
#define TVM_INSERTITEMW (TV_FIRST + 50)
#define TVM_GETITEMW (TV_FIRST + 62)
#define TVM_SETITEMW (TV_FIRST + 63)

#define TVE_COLLAPSE 0x0001
#define TVE_EXPAND 0x0002
#define TVE_TOGGLE 0x0003

#define TVSIL_NORMAL 0
#define TVSIL_STATE 2
#define TVIS_STATEIMAGEMASK 0xF000
#define INDEXTOSTATEIMAGEMASK(index) ((index) << 12)

#define TVGN_ROOT 0x0000
#define TVGN_NEXT 0x0001
#define TVGN_PREVIOUS 0x0002
#define TVGN_PARENT 0x0003
#define TVGN_CHILD 0x0004
#define TVGN_FIRSTVISIBLE 0x0005
#define TVGN_NEXTVISIBLE 0x0006
#define TVGN_PREVIOUSVISIBLE 0x0007
#define TVGN_DROPHILITE 0x0008
#define TVGN_CARET 0x0009

#define TVHT_NOWHERE 0x0001
#define TVHT_ONITEMICON 0x0002
#define TVHT_ONITEMLABEL 0x0004
#define TVHT_ONITEMINDENT 0x0008
#define TVHT_ONITEMBUTTON 0x0010
#define TVHT_ONITEMRIGHT 0x0020
#define TVHT_ONITEMSTATEICON 0x0040
#define TVHT_ONITEM (TVHT_ONITEMICON | TVHT_ONITEMLABEL | TVHT_ONITEMSTATEICON)
#define TVHT_ABOVE 0x0100
#define TVHT_BELOW 0x0200
#define TVHT_TORIGHT 0x0400
#define TVHT_TOLEFT 0x0800

#define TVC_UNKNOWN 0x0000
#define TVC_BYMOUSE 0x0001
#define TVC_BYKEYBOARD 0x0002

#define TVN_FIRST (0U - 400U)
#define TVN_KEYDOWN (TVN_FIRST - 12)
#define TVN_SELCHANGINGW (TVN_FIRST - 50)
#define TVN_SELCHANGEDW (TVN_FIRST - 51)
#define TVN_GETDISPINFOW (TVN_FIRST - 52)
#define TVN_ITEMEXPANDINGW (TVN_FIRST - 54)
#define TVN_ITEMEXPANDEDW (TVN_FIRST - 55)
#define TVN_BEGINDRAGW (TVN_FIRST - 56)
#define TVN_BEGINRDRAGW (TVN_FIRST - 57)
#define TVN_DELETEITEMW (TVN_FIRST - 58)

struct TVITEMW {
    UINT mask;
    HTREEITEM hItem;
    UINT state;
    UINT stateMask;
    LPWSTR pszText;
    int cchTextMax;  // in WCHARs, with the terminator
    int iImage;
    int iSelectedImage;
    int cChildren;
    LPARAM lParam;
};
using LPTVITEMW = TVITEMW*;

struct TVINSERTSTRUCTW {
    HTREEITEM hParent;
    HTREEITEM hInsertAfter;
    TVITEMW item;
};
using LPTVINSERTSTRUCTW = TVINSERTSTRUCTW*;

struct TVHITTESTINFO {
    POINT pt;  // in client coordinates
    UINT flags;
    HTREEITEM hItem;
};
using LPTVHITTESTINFO = TVHITTESTINFO*;

struct NMTREEVIEWW {
    NMHDR hdr;
    UINT action;
    TVITEMW itemOld;
    TVITEMW itemNew;
    POINT ptDrag;  // in client coordinates
};
using LPNMTREEVIEWW = NMTREEVIEWW*;

struct NMTVDISPINFOW {
    NMHDR hdr;
    TVITEMW item;
};
using LPNMTVDISPINFOW = NMTVDISPINFOW*;

#pragma pack(push, 1)
struct NMTVKEYDOWN {
    NMHDR hdr;
    WORD wVKey;
    UINT flags;
};
#pragma pack(pop)
using LPNMTVKEYDOWN = NMTVKEYDOWN*;

inline LRESULT SendTreeMessage(HWND window, UINT message, WPARAM wParam, const void* data) {
    return SNDMSG(window, message, wParam, reinterpret_cast<LPARAM>(data));
}
inline HTREEITEM TreeView_InsertItem(HWND window, TVINSERTSTRUCTW* insertion) {
    return reinterpret_cast<HTREEITEM>(SendTreeMessage(window, TVM_INSERTITEMW, 0, insertion));
}
inline BOOL TreeView_DeleteItem(HWND window, HTREEITEM item) {
    return static_cast<BOOL>(SendTreeMessage(window, TVM_DELETEITEM, 0, item));
}
inline BOOL TreeView_DeleteAllItems(HWND window) {
    return TreeView_DeleteItem(window, TVI_ROOT);
}
inline BOOL TreeView_Expand(HWND window, HTREEITEM item, UINT action) {
    return static_cast<BOOL>(SendTreeMessage(window, TVM_EXPAND, action, item));
}
// The item goes in, and its place comes out, at the same address.
inline BOOL TreeView_GetItemRect(HWND window, HTREEITEM item, RECT* place, BOOL ofTextOnly) {
    *reinterpret_cast<HTREEITEM*>(place) = item;
    return static_cast<BOOL>(
        SendTreeMessage(window, TVM_GETITEMRECT, static_cast<WPARAM>(ofTextOnly), place));
}
inline UINT TreeView_GetCount(HWND window) {
    return static_cast<UINT>(SNDMSG(window, TVM_GETCOUNT, 0, 0));
}
inline HIMAGELIST TreeView_GetImageList(HWND window, UINT which) {
    return reinterpret_cast<HIMAGELIST>(SNDMSG(window, TVM_GETIMAGELIST, which, 0));
}
inline HIMAGELIST TreeView_SetImageList(HWND window, HIMAGELIST images, UINT which) {
    return reinterpret_cast<HIMAGELIST>(SendTreeMessage(window, TVM_SETIMAGELIST, which, images));
}
inline HTREEITEM TreeView_GetNextItem(HWND window, HTREEITEM item, UINT relation) {
    return reinterpret_cast<HTREEITEM>(SendTreeMessage(window, TVM_GETNEXTITEM, relation, item));
}
inline HTREEITEM TreeView_GetChild(HWND window, HTREEITEM item) {
    return TreeView_GetNextItem(window, item, TVGN_CHILD);
}
inline HTREEITEM TreeView_GetNextSibling(HWND window, HTREEITEM item) {
    return TreeView_GetNextItem(window, item, TVGN_NEXT);
}
inline HTREEITEM TreeView_GetPrevSibling(HWND window, HTREEITEM item) {
    return TreeView_GetNextItem(window, item, TVGN_PREVIOUS);
}
inline HTREEITEM TreeView_GetParent(HWND window, HTREEITEM item) {
    return TreeView_GetNextItem(window, item, TVGN_PARENT);
}
inline HTREEITEM TreeView_GetSelection(HWND window) {
    return TreeView_GetNextItem(window, nullptr, TVGN_CARET);
}
inline HTREEITEM TreeView_GetDropHilight(HWND window) {
    return TreeView_GetNextItem(window, nullptr, TVGN_DROPHILITE);
}
inline HTREEITEM TreeView_GetRoot(HWND window) {
    return TreeView_GetNextItem(window, nullptr, TVGN_ROOT);
}
inline BOOL TreeView_Select(HWND window, HTREEITEM item, UINT what) {
    return static_cast<BOOL>(SendTreeMessage(window, TVM_SELECTITEM, what, item));
}
inline BOOL TreeView_SelectItem(HWND window, HTREEITEM item) {
    return TreeView_Select(window, item, TVGN_CARET);
}
inline BOOL TreeView_SelectDropTarget(HWND window, HTREEITEM item) {
    return TreeView_Select(window, item, TVGN_DROPHILITE);
}
inline BOOL TreeView_GetItem(HWND window, TVITEMW* item) {
    return static_cast<BOOL>(SendTreeMessage(window, TVM_GETITEMW, 0, item));
}
inline BOOL TreeView_SetItem(HWND window, const TVITEMW* item) {
    return static_cast<BOOL>(SendTreeMessage(window, TVM_SETITEMW, 0, item));
}
inline HTREEITEM TreeView_HitTest(HWND window, TVHITTESTINFO* hit) {
    return reinterpret_cast<HTREEITEM>(SendTreeMessage(window, TVM_HITTEST, 0, hit));
}
inline BOOL TreeView_EnsureVisible(HWND window, HTREEITEM item) {
    return static_cast<BOOL>(SendTreeMessage(window, TVM_ENSUREVISIBLE, 0, item));
}

#pragma GCC visibility push(default)
extern "C" {

// Registers the window classes above. May be called more than once.
void WINAPI InitCommonControls();

HIMAGELIST WINAPI ImageList_Create(int cx, int cy, UINT flags, int cInitial, int cGrow);
BOOL WINAPI ImageList_Destroy(HIMAGELIST himl);
int WINAPI ImageList_Add(HIMAGELIST himl, HBITMAP hbmImage, HBITMAP hbmMask);
BOOL WINAPI ImageList_GetIconSize(HIMAGELIST himl, int* cx, int* cy);

}  // extern "C"
#pragma GCC visibility pop
