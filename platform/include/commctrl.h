// comctl32: trackbar, tab control, tree view, image lists.
#pragma once

#include "windows.h"

// Notifications, with an NMHDR, that several controls send
#define NM_FIRST (0U - 0U)
#define NM_RCLICK (NM_FIRST - 5)

#define SNDMSG SendMessageW

// Image lists
DECLARE_HANDLE(HIMAGELIST);

#define ILC_COLOR 0x00000000

// Trackbar. Tells its parent of movement with WM_HSCROLL and a TB_ code.
#define TRACKBAR_CLASSW TEXT("msctls_trackbar32")

#define TBS_TOP 0x0004

#define TBM_GETPOS (WM_USER)
#define TBM_GETRANGEMIN (WM_USER + 1)
#define TBM_GETRANGEMAX (WM_USER + 2)
#define TBM_GETTIC (WM_USER + 3)
#define TBM_SETTIC (WM_USER + 4)
#define TBM_SETPOS (WM_USER + 5)
#define TBM_SETRANGE (WM_USER + 6)
#define TBM_GETTHUMBRECT (WM_USER + 25)

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

#define TCS_MULTILINE 0x0200

#define TCM_FIRST 0x1300
#define TCM_GETITEMCOUNT (TCM_FIRST + 4)
#define TCM_GETCURSEL (TCM_FIRST + 11)
#define TCM_SETCURSEL (TCM_FIRST + 12)
#define TCM_ADJUSTRECT (TCM_FIRST + 40)
#define TCM_GETITEMW (TCM_FIRST + 60)
#define TCM_INSERTITEMW (TCM_FIRST + 62)

#define TCIF_TEXT 0x0001

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

// Tree view
#define WC_TREEVIEWW TEXT("SysTreeView32")

#define TVS_HASLINES 0x0002

DECLARE_HANDLE(HTREEITEM);

#define TVI_ROOT (reinterpret_cast<HTREEITEM>(static_cast<LONG_PTR>(-0x10000)))
#define TVI_FIRST (reinterpret_cast<HTREEITEM>(static_cast<LONG_PTR>(-0x0FFFF)))
#define TVI_LAST (reinterpret_cast<HTREEITEM>(static_cast<LONG_PTR>(-0x0FFFE)))
#define TVI_SORT (reinterpret_cast<HTREEITEM>(static_cast<LONG_PTR>(-0x0FFFD)))

// In place of an item's text: the parent is asked with TVN_GETDISPINFOW whenever it is needed.
#define LPSTR_TEXTCALLBACKW (reinterpret_cast<LPWSTR>(static_cast<LONG_PTR>(-1)))

#define TVIF_TEXT 0x0001
#define TVIF_IMAGE 0x0002
#define TVIF_PARAM 0x0004
#define TVIF_STATE 0x0008
#define TVIF_HANDLE 0x0010
#define TVIF_SELECTEDIMAGE 0x0020

#define TVIS_EXPANDED 0x0020

#define TV_FIRST 0x1100
#define TVM_DELETEITEM (TV_FIRST + 1)
#define TVM_EXPAND (TV_FIRST + 2)
#define TVM_GETITEMRECT (TV_FIRST + 4)
#define TVM_SETIMAGELIST (TV_FIRST + 9)
#define TVM_GETNEXTITEM (TV_FIRST + 10)
#define TVM_SELECTITEM (TV_FIRST + 11)
#define TVM_HITTEST (TV_FIRST + 17)
#define TVM_ENSUREVISIBLE (TV_FIRST + 20)
#define TVM_INSERTITEMW (TV_FIRST + 50)
#define TVM_GETITEMW (TV_FIRST + 62)

#define TVE_COLLAPSE 0x0001
#define TVE_EXPAND 0x0002

#define TVSIL_NORMAL 0
#define TVSIL_STATE 2
#define TVIS_STATEIMAGEMASK 0xF000
#define INDEXTOSTATEIMAGEMASK(index) ((index) << 12)

#define TVGN_ROOT 0x0000
#define TVGN_NEXT 0x0001
#define TVGN_PARENT 0x0003
#define TVGN_CHILD 0x0004
#define TVGN_NEXTVISIBLE 0x0006
#define TVGN_DROPHILITE 0x0008
#define TVGN_CARET 0x0009

#define TVN_FIRST (0U - 400U)
#define TVN_KEYDOWN (TVN_FIRST - 12)
#define TVN_GETDISPINFOW (TVN_FIRST - 52)
#define TVN_ITEMEXPANDINGW (TVN_FIRST - 54)
#define TVN_ITEMEXPANDEDW (TVN_FIRST - 55)
#define TVN_BEGINDRAGW (TVN_FIRST - 56)

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

struct TVINSERTSTRUCTW {
    HTREEITEM hParent;
    HTREEITEM hInsertAfter;
    TVITEMW item;
};

struct TVHITTESTINFO {
    POINT pt;  // in client coordinates
    UINT flags;
    HTREEITEM hItem;
};

struct NMTREEVIEWW {
    NMHDR hdr;
    UINT action;
    TVITEMW itemOld;
    TVITEMW itemNew;
    POINT ptDrag;  // in client coordinates
};

struct NMTVDISPINFOW {
    NMHDR hdr;
    TVITEMW item;
};

#pragma pack(push, 1)
struct NMTVKEYDOWN {
    NMHDR hdr;
    WORD wVKey;
    UINT flags;
};
#pragma pack(pop)

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
inline HTREEITEM TreeView_HitTest(HWND window, TVHITTESTINFO* hit) {
    return reinterpret_cast<HTREEITEM>(SendTreeMessage(window, TVM_HITTEST, 0, hit));
}
inline BOOL TreeView_EnsureVisible(HWND window, HTREEITEM item) {
    return static_cast<BOOL>(SendTreeMessage(window, TVM_ENSUREVISIBLE, 0, item));
}

#pragma GCC visibility push(default)
extern "C" {

void WINAPI InitCommonControls();

HIMAGELIST WINAPI ImageList_Create(int cx, int cy, UINT flags, int cInitial, int cGrow);
BOOL WINAPI ImageList_Destroy(HIMAGELIST himl);
int WINAPI ImageList_Add(HIMAGELIST himl, HBITMAP hbmImage, HBITMAP hbmMask);

}  // extern "C"
#pragma GCC visibility pop
