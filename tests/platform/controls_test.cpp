// The controls under a window that writes down what they tell it.
#include <windows.h>
#include <commctrl.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace {

using Text = std::basic_string<WCHAR>;
using Codes = std::vector<UINT>;  // of WM_COMMAND and WM_NOTIFY, or of scrolling, in order

constexpr int OwnId = 7;

class ControlTest : public testing::Test {
protected:
    void SetUp() override {
        InitCommonControls();
        WNDCLASSEXW description{};
        description.cbSize = sizeof(description);
        description.lpfnWndProc = Receive;
        description.hInstance = GetModuleHandleW(nullptr);
        description.lpszClassName = TEXT("ControlTest");
        RegisterClassExW(&description);
        parent_ = CreateWindowExW(0, TEXT("ControlTest"), TEXT(""), WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0,
                                  400, 400, nullptr, nullptr, description.hInstance, this);
        ASSERT_TRUE(parent_);
        SetWindowLongPtrW(parent_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    }
    void TearDown() override { DestroyWindow(parent_); }

    HWND Make(LPCWSTR name, DWORD style, int id = OwnId, LPCWSTR text = TEXT("")) {
        const HWND control = CreateWindowExW(0, name, text, WS_CHILD | WS_VISIBLE | style, 10, 10, 200, 200,
                                             parent_, reinterpret_cast<HMENU>(static_cast<ULONG_PTR>(id)),
                                             GetModuleHandleW(nullptr), nullptr);
        EXPECT_TRUE(control);
        told_.clear();
        return control;
    }

    // What the parent has been told since the last look; notices of focus and capture left out.
    Codes Told() {
        Codes told;
        told.swap(told_);
        return told;
    }

    void Press(HWND control, WPARAM key) {
        SendMessageW(control, WM_KEYDOWN, key, 1);
        SendMessageW(control, WM_KEYUP, key, 1);
    }
    void Click(HWND control, int x, int y) {
        SendMessageW(control, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(x, y));
        SendMessageW(control, WM_LBUTTONUP, 0, MAKELPARAM(x, y));
    }
    void Pump() {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            DispatchMessageW(&message);
        }
    }

    HWND parent_ = nullptr;
    Codes told_;
    LRESULT answer_ = 0;  // to WM_NOTIFY with the code answered_
    UINT answered_ = 0;
    std::map<LPARAM, Text> texts_;  // on demand, by an item's data
    NMTREEVIEWW about_{};           // the last notice of a tree view's item

private:
    static LRESULT CALLBACK Receive(HWND window, UINT message, WPARAM first, LPARAM second) {
        auto* test = reinterpret_cast<ControlTest*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (test && message == WM_COMMAND) {
            test->told_.push_back(HIWORD(first));
        } else if (test && message == WM_HSCROLL) {
            test->told_.push_back(static_cast<UINT>(first));
        } else if (test && message == WM_NOTIFY) {
            return test->TakeNotice(*reinterpret_cast<NMHDR*>(second));
        }
        return DefWindowProcW(window, message, first, second);
    }

    LRESULT TakeNotice(NMHDR& notice) {
        if (notice.code == TVN_GETDISPINFOW) {
            auto& request = reinterpret_cast<NMTVDISPINFOW&>(notice);
            if (request.item.mask & TVIF_TEXT) {
                lstrcpynW(request.item.pszText, texts_[request.item.lParam].c_str(), request.item.cchTextMax);
            }
            return 0;
        }
        static const UINT ofInterest[] = {NM_CLICK,           NM_RCLICK,         TCN_SELCHANGE,
                                          TCN_SELCHANGING,    TVN_SELCHANGEDW,   TVN_SELCHANGINGW,
                                          TVN_ITEMEXPANDINGW, TVN_ITEMEXPANDEDW, TVN_BEGINDRAGW,
                                          TVN_BEGINRDRAGW,    TVN_DELETEITEMW,   TVN_KEYDOWN};
        for (const UINT code : ofInterest) {
            if (notice.code == code) {
                told_.push_back(code);
                if (code <= TVN_SELCHANGINGW && code >= TVN_DELETEITEMW) {
                    about_ = reinterpret_cast<const NMTREEVIEWW&>(notice);
                }
            }
        }
        return notice.code == answered_ ? answer_ : 0;
    }
};

Text TextOf(HWND control) {
    WCHAR text[200];
    GetWindowTextW(control, text, 200);
    return text;
}

using ButtonTest = ControlTest;

bool IsChecked(HWND button) {
    return SendMessageW(button, BM_GETCHECK, 0, 0) == BST_CHECKED;
}

TEST_F(ButtonTest, CheckBoxAnswersMouseKeyAndProgram) {
    const HWND box = Make(TEXT("Button"), BS_AUTOCHECKBOX | WS_TABSTOP);
    SendMessageW(box, BM_CLICK, 0, 0);
    EXPECT_TRUE(IsChecked(box));
    EXPECT_EQ(GetFocus(), box);
    Press(box, VK_SPACE);
    EXPECT_FALSE(IsChecked(box));
    Click(box, 5, 5);
    EXPECT_TRUE(IsChecked(box));
    EXPECT_EQ(Told(), (Codes{BN_CLICKED, BN_CLICKED, BN_CLICKED}));

    // Set by the program, and let go outside: nobody has clicked.
    SendMessageW(box, BM_SETCHECK, BST_UNCHECKED, 0);
    SendMessageW(box, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
    SendMessageW(box, WM_LBUTTONUP, 0, MAKELPARAM(500, 5));
    EXPECT_FALSE(IsChecked(box));
    EXPECT_EQ(Told(), Codes{});
}

class EditTest : public ControlTest {
protected:
    void Type(HWND edit, const Text& letters) {
        for (const WCHAR letter : letters) {
            SendMessageW(edit, WM_CHAR, static_cast<WPARAM>(letter), 1);
        }
    }
};

TEST_F(EditTest, KeysMoveAndErase) {
    const HWND edit = Make(TEXT("Edit"), ES_AUTOHSCROLL, OwnId, TEXT("name"));
    Press(edit, VK_END);
    Type(edit, TEXT("\b"));
    Press(edit, VK_HOME);
    Press(edit, VK_DELETE);
    Press(edit, VK_RIGHT);
    Type(edit, TEXT("X"));
    EXPECT_EQ(TextOf(edit), TEXT("aXm"));

    SendMessageW(edit, EM_SETSEL, 0, -1);
    DWORD start = 9;
    DWORD end = 9;
    SendMessageW(edit, EM_GETSEL, reinterpret_cast<WPARAM>(&start), reinterpret_cast<LPARAM>(&end));
    EXPECT_EQ(start, 0u);
    EXPECT_EQ(end, 3u);
    Type(edit, TEXT("N"));
    EXPECT_EQ(TextOf(edit), TEXT("N"));
}

class TrackbarTest : public ControlTest {
protected:
    HWND MakeSlider() {
        const HWND slider = Make(TRACKBAR_CLASSW, TBS_TOP);
        SendMessageW(slider, TBM_SETRANGE, TRUE, MAKELPARAM(18, 83));
        return slider;
    }
    // Some systems tell of the end twice, with the button and with the capture.
    Codes ToldOnce() {
        Codes told = Told();
        told.erase(std::unique(told.begin(), told.end()), told.end());
        return told;
    }
    int Position(HWND slider) { return static_cast<int>(SendMessageW(slider, TBM_GETPOS, 0, 0)); }
};

TEST_F(TrackbarTest, KeysScroll) {
    const HWND slider = MakeSlider();
    EXPECT_EQ(SendMessageW(slider, TBM_GETPAGESIZE, 0, 0), 13);
    const struct {
        WPARAM Key;
        int Position;
        Codes Told;
    } steps[] = {
        {VK_LEFT, 49, {TB_LINEUP, TB_ENDTRACK}},   {VK_RIGHT, 50, {TB_LINEDOWN, TB_ENDTRACK}},
        {VK_PRIOR, 37, {TB_PAGEUP, TB_ENDTRACK}},  {VK_NEXT, 50, {TB_PAGEDOWN, TB_ENDTRACK}},
        {VK_HOME, 18, {TB_TOP, TB_ENDTRACK}},      {VK_LEFT, 18, {TB_ENDTRACK}},
        {VK_END, 83, {TB_BOTTOM, TB_ENDTRACK}},    {VK_UP, 82, {TB_LINEUP, TB_ENDTRACK}},
        {VK_DOWN, 83, {TB_LINEDOWN, TB_ENDTRACK}},
    };
    SendMessageW(slider, TBM_SETPOS, TRUE, 50);
    for (const auto& step : steps) {
        Press(slider, step.Key);
        EXPECT_EQ(Position(slider), step.Position) << &step - steps;
        EXPECT_EQ(Told(), step.Told) << &step - steps;
    }
}

TEST_F(TrackbarTest, ThumbFollowsTheMouse) {
    const HWND slider = MakeSlider();
    RECT thumb{};
    RECT channel{};
    SendMessageW(slider, TBM_GETTHUMBRECT, 0, reinterpret_cast<LPARAM>(&thumb));
    SendMessageW(slider, TBM_GETCHANNELRECT, 0, reinterpret_cast<LPARAM>(&channel));
    const int x = (thumb.left + thumb.right) / 2;
    const int y = (thumb.top + thumb.bottom) / 2;
    SendMessageW(slider, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(x, y));
    SendMessageW(slider, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(channel.right + 50, y));
    EXPECT_EQ(Position(slider), 83);
    SendMessageW(slider, WM_LBUTTONUP, 0, MAKELPARAM(channel.right + 50, y));
    EXPECT_EQ(ToldOnce(), (Codes{MAKELONG(TB_THUMBTRACK, 83), MAKELONG(TB_THUMBPOSITION, 83), TB_ENDTRACK}));
    EXPECT_NE(GetCapture(), slider);

    // Beside the thumb the bar goes by pages.
    Click(slider, channel.left + 5, y);
    EXPECT_EQ(Position(slider), 70);
    EXPECT_EQ(ToldOnce(), (Codes{TB_PAGEUP, TB_ENDTRACK}));
}

class TabTest : public ControlTest {
protected:
    HWND MakeWithTabs(DWORD style, int count) {
        const HWND tabs = Make(WC_TABCONTROLW, style);
        for (int i = 0; i < count; ++i) {
            WCHAR text[40];
            wsprintfW(text, TEXT("Configuration: '%d'"), i);
            TCITEMW item{};
            item.mask = TCIF_TEXT | TCIF_PARAM;
            item.pszText = text;
            item.lParam = 100 + i;
            EXPECT_EQ(
                SendMessageW(tabs, TCM_INSERTITEMW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&item)),
                i);
        }
        return tabs;
    }
    RECT Place(HWND tabs, int index) {
        RECT place{};
        EXPECT_TRUE(SendMessageW(tabs, TCM_GETITEMRECT, static_cast<WPARAM>(index),
                                 reinterpret_cast<LPARAM>(&place)));
        return place;
    }
};

TEST_F(TabTest, UserChoosesWhenTheOwnerLets) {
    const HWND tabs = MakeWithTabs(0, 2);
    EXPECT_EQ(SendMessageW(tabs, TCM_GETITEMCOUNT, 0, 0), 2);
    EXPECT_EQ(SendMessageW(tabs, TCM_GETCURSEL, 0, 0), 0);
    WCHAR text[40] = {};
    TCITEMW item{};
    item.mask = TCIF_TEXT | TCIF_PARAM;
    item.pszText = text;
    item.cchTextMax = 40;
    EXPECT_TRUE(SendMessageW(tabs, TCM_GETITEMW, 1, reinterpret_cast<LPARAM>(&item)));
    EXPECT_EQ(Text(item.pszText), TEXT("Configuration: '1'"));
    EXPECT_EQ(item.lParam, 101);

    EXPECT_EQ(SendMessageW(tabs, TCM_SETCURSEL, 1, 0), 0);
    EXPECT_EQ(SendMessageW(tabs, TCM_SETCURSEL, 0, 0), 1);
    EXPECT_EQ(Told(), Codes{});

    answered_ = TCN_SELCHANGING;
    answer_ = TRUE;
    const RECT second = Place(tabs, 1);
    Click(tabs, second.left + 5, second.top + 5);
    EXPECT_EQ(SendMessageW(tabs, TCM_GETCURSEL, 0, 0), 0);
    EXPECT_EQ(Told(), (Codes{TCN_SELCHANGING, NM_CLICK}));

    answer_ = FALSE;
    Click(tabs, second.left + 5, second.top + 5);
    EXPECT_EQ(SendMessageW(tabs, TCM_GETCURSEL, 0, 0), 1);
    Press(tabs, VK_LEFT);
    EXPECT_EQ(SendMessageW(tabs, TCM_GETCURSEL, 0, 0), 0);
    EXPECT_EQ(Told(), (Codes{TCN_SELCHANGING, TCN_SELCHANGE, NM_CLICK, TCN_SELCHANGING, TCN_SELCHANGE}));
}

TEST_F(TabTest, ManyTabsStackOrScroll) {
    const HWND tabs = MakeWithTabs(TCS_MULTILINE, 10);
    EXPECT_GT(SendMessageW(tabs, TCM_GETROWCOUNT, 0, 0), 3);
    RECT inside{0, 0, 200, 200};
    SendMessageW(tabs, TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&inside));
    EXPECT_GE(inside.top, Place(tabs, 0).bottom);
    EXPECT_GE(inside.top, Place(tabs, 9).bottom);
    EXPECT_GT(inside.left, 0);
    RECT around = inside;
    SendMessageW(tabs, TCM_ADJUSTRECT, TRUE, reinterpret_cast<LPARAM>(&around));
    EXPECT_EQ(around.top, 0);
    EXPECT_EQ(around.right, 200);

    SetWindowLongPtrW(tabs, GWL_STYLE, GetWindowLongPtrW(tabs, GWL_STYLE) & ~LONG_PTR{TCS_MULTILINE});
    EXPECT_EQ(SendMessageW(tabs, TCM_GETROWCOUNT, 0, 0), 1);
    SendMessageW(tabs, TCM_SETCURSEL, 9, 0);
    const RECT last = Place(tabs, 9);
    EXPECT_GE(last.left, 0);
    TCHITTESTINFO hit{{last.left + 5, last.top + 5}, 0};
    EXPECT_EQ(SendMessageW(tabs, TCM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit)), 9);
}

class TreeTest : public ControlTest {
protected:
    void SetUp() override {
        ControlTest::SetUp();
        tree_ = Make(WC_TREEVIEWW, TVS_HASLINES);
        texts_ = {{1, TEXT("Beta")}, {2, TEXT("alpha")}, {3, TEXT("Gamma")}};
    }

    HTREEITEM Insert(HTREEITEM parent, HTREEITEM after, LPARAM data, LPCWSTR text = LPSTR_TEXTCALLBACKW) {
        TVINSERTSTRUCTW insertion{};
        insertion.hParent = parent;
        insertion.hInsertAfter = after;
        insertion.item.mask = TVIF_TEXT | TVIF_PARAM;
        insertion.item.pszText = const_cast<LPWSTR>(text);
        insertion.item.lParam = data;
        return TreeView_InsertItem(tree_, &insertion);
    }
    // A root with three items under it, sorted by the texts they are asked for.
    void Fill() {
        root_ = Insert(TVI_ROOT, TVI_FIRST, 0, TEXT("Sample Clock"));
        for (const LPARAM data : {1, 2, 3}) {
            items_[data] = Insert(root_, TVI_SORT, data);
        }
        TreeView_Expand(tree_, root_, TVE_EXPAND);
        Told();
    }
    RECT TextPlace(HTREEITEM item) {
        RECT place{};
        EXPECT_TRUE(TreeView_GetItemRect(tree_, item, &place, TRUE));
        return place;
    }
    // Posted, because the system's tree view waits for what follows a pressed button.
    void Post(UINT message, const RECT& place, int right = 0) {
        PostMessageW(tree_, message, 0, MAKELPARAM(place.left + 3 + right, place.top + 5));
    }

    HWND tree_ = nullptr;
    HTREEITEM root_ = nullptr;
    std::map<LPARAM, HTREEITEM> items_;
};

TEST_F(TreeTest, ExpansionIsToldToTheOwner) {
    Fill();
    const HTREEITEM below = Insert(items_[3], TVI_LAST, 1);
    EXPECT_FALSE(TreeView_Expand(tree_, below, TVE_EXPAND));  // nothing under it
    EXPECT_TRUE(TreeView_Expand(tree_, items_[3], TVE_EXPAND));
    EXPECT_EQ(Told(), (Codes{TVN_ITEMEXPANDINGW, TVN_ITEMEXPANDEDW}));
    EXPECT_EQ(about_.action, static_cast<UINT>(TVE_EXPAND));
    EXPECT_EQ(about_.itemNew.hItem, items_[3]);

    // The user is always asked after, a program only the first time.
    TreeView_SelectItem(tree_, items_[3]);
    Told();
    answered_ = TVN_ITEMEXPANDINGW;
    answer_ = TRUE;
    SendMessageW(tree_, WM_KEYDOWN, VK_LEFT, 1);
    EXPECT_EQ(Told(), (Codes{TVN_KEYDOWN, TVN_ITEMEXPANDINGW}));
    EXPECT_EQ(about_.action, static_cast<UINT>(TVE_COLLAPSE));
    EXPECT_EQ(TreeView_GetNextItem(tree_, items_[3], TVGN_NEXTVISIBLE), below);
    EXPECT_TRUE(TreeView_Expand(tree_, items_[3], TVE_COLLAPSE));
    EXPECT_EQ(Told(), Codes{});
    EXPECT_EQ(TreeView_GetNextItem(tree_, items_[3], TVGN_NEXTVISIBLE), nullptr);
}

TEST_F(TreeTest, DeletingTellsOfEveryItemAndMovesTheSelection) {
    Fill();
    const HTREEITEM below = Insert(items_[1], TVI_LAST, 4);
    TreeView_Expand(tree_, items_[1], TVE_EXPAND);
    TreeView_SelectItem(tree_, below);
    Told();
    EXPECT_TRUE(TreeView_DeleteItem(tree_, items_[1]));
    EXPECT_EQ(Told(), (Codes{TVN_DELETEITEMW, TVN_DELETEITEMW, TVN_SELCHANGINGW, TVN_SELCHANGEDW}));
    EXPECT_EQ(TreeView_GetSelection(tree_), items_[3]);
    EXPECT_EQ(TreeView_GetCount(tree_), 3u);

    TreeView_DeleteAllItems(tree_);
    EXPECT_EQ(Told(), (Codes{TVN_DELETEITEMW, TVN_DELETEITEMW, TVN_DELETEITEMW}));
    EXPECT_EQ(TreeView_GetCount(tree_), 0u);
    EXPECT_EQ(TreeView_GetRoot(tree_), nullptr);
}

TEST_F(TreeTest, MouseClicksAndDrags) {
    Fill();
    const RECT place = TextPlace(items_[1]);
    SetFocus(tree_);
    TreeView_SelectItem(tree_, root_);
    Pump();
    Told();

    Post(WM_LBUTTONDOWN, place);
    Post(WM_LBUTTONUP, place);
    Pump();
    EXPECT_EQ(Told(), (Codes{NM_CLICK, TVN_SELCHANGINGW, TVN_SELCHANGEDW}));
    EXPECT_EQ(TreeView_GetSelection(tree_), items_[1]);

    // A tremor is a click still.
    const RECT other = TextPlace(items_[3]);
    Post(WM_LBUTTONDOWN, other);
    Post(WM_MOUSEMOVE, other, 1);
    Post(WM_LBUTTONUP, other, 1);
    Pump();
    EXPECT_EQ(TreeView_GetSelection(tree_), items_[3]);
    Told();

    Post(WM_LBUTTONDOWN, place);
    Post(WM_MOUSEMOVE, place, 15);
    Pump();
    EXPECT_EQ(Told(), Codes{TVN_BEGINDRAGW});
    EXPECT_EQ(about_.itemNew.hItem, items_[1]);
    EXPECT_EQ(about_.ptDrag.x, place.left + 3);
    EXPECT_EQ(TreeView_GetSelection(tree_), items_[3]);
    EXPECT_NE(GetCapture(), tree_);

    Post(WM_RBUTTONDOWN, place);
    Post(WM_RBUTTONUP, place);
    Pump();
    EXPECT_EQ(Told(), Codes{NM_RCLICK});
}

}  // namespace
