#include "config_ui/clocks/clock_tree.h"

#include <initializer_list>

#include "config_ui/property_page.h"
#include "config_ui/resource.h"

namespace kestvox {

namespace {

// Pictures of the image list, in the order in which they are added.
enum Picture { CardPicture, ClockPicture };

constexpr int PictureSize = 16;

struct SourceSuffix {
    DWORD Source;
    UINT Text;
};
// A slave shows where its clock comes from by its place in the tree.
constexpr SourceSuffix Suffixes[] = {
    {InternalClock, IDS_SUFFIX_INTERNAL_CLOCK},
    {DigitalInputClock, IDS_SUFFIX_DIGITAL_INPUT_CLOCK},
    {PllClock, IDS_SUFFIX_PLL_CLOCK},
    {AutomaticClock, IDS_SUFFIX_AUTOMATIC_CLOCK},
};

void AddPicture(HIMAGELIST images, WORD bitmap) {
    const HBITMAP picture = LoadBitmapW(ModuleHandle, MAKEINTRESOURCEW(bitmap));
    if (picture != nullptr) {
        ImageList_Add(images, picture, nullptr);
        DeleteObject(picture);
    }
}

// A slave has the link's picture before its own.
constexpr UINT SlaveMark = 1;

HIMAGELIST MakePictures(std::initializer_list<WORD> bitmaps) {
    const HIMAGELIST images = ImageList_Create(PictureSize, PictureSize, ILC_COLOR, 2, 0);
    for (const WORD bitmap : bitmaps) {
        AddPicture(images, bitmap);
    }
    return images;
}

HTREEITEM InsertItem(HWND tree, HTREEITEM parent, HTREEITEM after, WCHAR* text, Picture picture,
                     CardRecord* card) {
    TVINSERTSTRUCTW insertion = {};
    insertion.hParent = parent;
    insertion.hInsertAfter = after;
    insertion.item.mask = TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE | TVIF_PARAM | TVIF_STATE;
    insertion.item.stateMask = TVIS_STATEIMAGEMASK;
    if (card != nullptr && parent != ClockRoot(tree)) {
        insertion.item.state = INDEXTOSTATEIMAGEMASK(SlaveMark);
    }
    insertion.item.pszText = text;
    insertion.item.iImage = picture;
    insertion.item.iSelectedImage = picture;
    insertion.item.lParam = reinterpret_cast<LPARAM>(card);
    return TreeView_InsertItem(tree, &insertion);
}

HTREEITEM FirstTopLevelCard(HWND tree) {
    return TreeView_GetChild(tree, ClockRoot(tree));
}

// The buffer has room for the longest suffix behind a name.
void AppendSource(DWORD source, WCHAR* text) {
    for (const SourceSuffix& candidate : Suffixes) {
        if (candidate.Source == source) {
            WCHAR suffix[ItemTextLength - NameLength];
            LoadText(candidate.Text, suffix);
            lstrcatW(text, suffix);
            return;
        }
    }
}

// From `item` on, which may be null.
HTREEITEM FindMaster(HWND tree, HTREEITEM item) {
    while (item != nullptr && !HasSlaves(tree, item)) {
        item = TreeView_GetNextSibling(tree, item);
    }
    return item;
}

}  // namespace

HWND ClockTree(HWND page) {
    return GetDlgItem(page, IDC_CLOCK_TREE);
}

void PrepareClockTree(HWND tree) {
    TreeView_SetImageList(tree, MakePictures({IDB_CARD, IDB_SAMPLE_CLOCK}), TVSIL_NORMAL);
    // State pictures are counted from 1: the first is never shown.
    TreeView_SetImageList(tree, MakePictures({IDB_LINK, IDB_LINK}), TVSIL_STATE);
    WCHAR text[50];
    LoadText(IDS_CLOCK_ROOT, text);
    InsertItem(tree, TVI_ROOT, TVI_FIRST, text, ClockPicture, nullptr);
}

void ClearClockTree(HWND tree) {
    TreeView_DeleteAllItems(tree);
    for (const int kind : {TVSIL_NORMAL, TVSIL_STATE}) {
        ImageList_Destroy(TreeView_SetImageList(tree, nullptr, kind));
    }
}

HTREEITEM ClockRoot(HWND tree) {
    return TreeView_GetRoot(tree);
}

CardRecord* CardOfItem(HWND tree, HTREEITEM item) {
    TVITEMW data = {};
    data.mask = TVIF_PARAM;
    data.hItem = item;
    if (item == nullptr || !TreeView_GetItem(tree, &data)) {
        return nullptr;
    }
    return reinterpret_cast<CardRecord*>(data.lParam);
}

HTREEITEM InsertCard(HWND tree, CardRecord& card, HTREEITEM parent, HTREEITEM after) {
    return InsertItem(tree, parent, after, LPSTR_TEXTCALLBACKW, CardPicture, &card);
}

bool IsTopLevel(HWND tree, HTREEITEM item) {
    return TreeView_GetParent(tree, item) == ClockRoot(tree);
}

bool IsSlave(HWND tree, HTREEITEM item) {
    const HTREEITEM parent = TreeView_GetParent(tree, item);
    return parent != nullptr && parent != ClockRoot(tree);
}

bool HasSlaves(HWND tree, HTREEITEM item) {
    return TreeView_GetChild(tree, item) != nullptr;
}

HTREEITEM GroupOfItem(HWND tree, HTREEITEM item) {
    while (item != ClockRoot(tree) && !IsTopLevel(tree, item)) {
        item = TreeView_GetParent(tree, item);
    }
    return item;
}

HTREEITEM FindTopLevelCard(HWND tree, const CardRecord& card) {
    HTREEITEM item = FirstTopLevelCard(tree);
    while (item != nullptr && CardOfItem(tree, item) != &card) {
        item = TreeView_GetNextSibling(tree, item);
    }
    return item;
}

HTREEITEM FirstMaster(HWND tree) {
    return FindMaster(tree, FirstTopLevelCard(tree));
}

HTREEITEM NextMaster(HWND tree, HTREEITEM master) {
    return FindMaster(tree, TreeView_GetNextSibling(tree, master));
}

void FormatItemText(const CardRecord& card, DWORD source, WCHAR (&text)[ItemTextLength]) {
    lstrcpynW(text, card.WorkingName, NameLength);
    AppendSource(source, text);
}

}  // namespace kestvox
