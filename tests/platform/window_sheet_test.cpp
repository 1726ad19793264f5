#include <windows.h>
#include <commctrl.h>
#include <prsht.h>

#include <gtest/gtest.h>

#include <map>

#include "platform/inspect.h"
#include "tests/platform/window_template.h"

namespace {

using window_test::TemplateBytes;

constexpr int Apply = 0x3021;

// What the pages were told, in words: "callback 2", "create", "PSN -1", each after the page's letter.
std::vector<std::string> story;
std::map<std::string, LRESULT> answers;           // to notifications, by their words
void (*script)(HWND sheet, const HWND pages[2]);  // runs once the first page is active
HWND pageWindows[2];

std::string Letter(LPARAM page) {
    return page == 0 ? "A " : "B ";
}

UINT CALLBACK NoteCallback(HWND, UINT message, PROPSHEETPAGEW* page) {
    story.push_back(Letter(page->lParam) + "callback " + std::to_string(message));
    return 1;
}

INT_PTR CALLBACK PageProcedure(HWND page, UINT message, WPARAM, LPARAM second) {
    const LPARAM number = GetWindowLongPtrW(page, static_cast<int>(DWLP_USER));
    switch (message) {
    case WM_INITDIALOG: {
        const LPARAM own = reinterpret_cast<const PROPSHEETPAGEW*>(second)->lParam;
        SetWindowLongPtrW(page, static_cast<int>(DWLP_USER), own);
        pageWindows[own] = page;
        story.push_back(Letter(own) + "create");
        SendMessageW(GetParent(page), PSM_CHANGED, reinterpret_cast<WPARAM>(page), 0);
        return TRUE;
    }
    case WM_NOTIFY: {
        const auto code = static_cast<int>(reinterpret_cast<const NMHDR*>(second)->code - PSN_FIRST);
        story.push_back(Letter(number) + "PSN " + std::to_string(code));
        SetWindowLongPtrW(page, DWLP_MSGRESULT, answers[story.back()]);
        return TRUE;
    }
    case WM_DESTROY:
        story.push_back(Letter(number) + "destroy");
        return TRUE;
    default:
        return FALSE;
    }
}

void CALLBACK RunScript(HWND, UINT, UINT_PTR timer, DWORD) {
    KillTimer(nullptr, timer);
    const HWND sheet = GetParent(pageWindows[0]);
    story.clear();
    script(sheet, pageWindows);
}

// Two pages; the answer of the sheet.
INT_PTR RunSheet(HWND owner, void (*steps)(HWND sheet, const HWND pages[2])) {
    const TemplateBytes dialog = [] {
        TemplateBytes bytes(WS_CHILD | WS_BORDER | DS_SETFONT, u"", {0, 0, 100, 100});
        bytes.Add(0x81, 5, u"text", WS_CHILD | WS_VISIBLE | WS_TABSTOP, {4, 4, 40, 12});
        return bytes;
    }();
    HPROPSHEETPAGE pages[2];
    for (LPARAM i = 0; i < 2; ++i) {
        PROPSHEETPAGEW page{};
        page.dwSize = PROPSHEETPAGEW_V1_SIZE;
        page.dwFlags = PSP_DLGINDIRECT | PSP_USETITLE | PSP_USECALLBACK;
        page.pResource = dialog.Get();
        page.pszTitle = i == 0 ? u"A" : u"B";
        page.pfnDlgProc = PageProcedure;
        page.lParam = i;
        page.pfnCallback = NoteCallback;
        pages[i] = CreatePropertySheetPageW(&page);
    }
    PROPSHEETHEADERW header{};
    header.dwSize = PROPSHEETHEADERW_V1_SIZE;
    header.hwndParent = owner;
    header.pszCaption = u"Sheet";
    header.nPages = 2;
    header.phpage = pages;
    script = steps;
    SetTimer(nullptr, 0, USER_TIMER_MINIMUM, RunScript);
    return PropertySheetW(&header);
}

class PropertySheets : public testing::Test {
protected:
    void SetUp() override {
        story.clear();
        answers.clear();
    }
    void TearDown() override { EXPECT_EQ(platform::CurrentUsage(), before_); }

private:
    const platform::Usage before_ = platform::CurrentUsage();
};

using Story = std::vector<std::string>;

TEST_F(PropertySheets, MakePagesWhenShownAndApplyThoseThatWere) {
    const HWND owner = CreateWindowExW(0, u"Button", u"", WS_POPUP | WS_VISIBLE, 0, 0, 9, 9, nullptr, nullptr,
                                       nullptr, nullptr);
    const INT_PTR result = RunSheet(owner, [](HWND sheet, const HWND pages[2]) {
        EXPECT_FALSE(IsWindowEnabled(GetWindow(sheet, GW_OWNER)));
        const HWND apply = GetDlgItem(sheet, Apply);
        EXPECT_FALSE(IsWindowEnabled(apply)) << "a page that fills itself in is not changed";
        EXPECT_EQ(GetFocus(), GetDlgItem(pages[0], 5));

        SendMessageW(sheet, PSM_CHANGED, reinterpret_cast<WPARAM>(pages[0]), 0);
        EXPECT_TRUE(IsWindowEnabled(apply));
        SendMessageW(apply, BM_CLICK, 0, 0);
        EXPECT_EQ(story, (Story{"A PSN -1", "A PSN -2", "A PSN 0"}));
        EXPECT_FALSE(IsWindowEnabled(apply));

        story.clear();
        SendMessageW(sheet, PSM_SETCURSEL, 1, 0);
        EXPECT_EQ(story, (Story{"A PSN -1", "B callback 2", "B create", "B PSN 0"}));
        EXPECT_TRUE(IsWindowVisible(pages[1]));
        EXPECT_FALSE(IsWindowVisible(pages[0]));
        EXPECT_EQ(SendMessageW(sheet, PSM_GETCURRENTPAGEHWND, 0, 0), reinterpret_cast<LRESULT>(pages[1]));
        const auto tabs = reinterpret_cast<HWND>(SendMessageW(sheet, PSM_GETTABCONTROL, 0, 0));
        EXPECT_EQ(SendMessageW(tabs, TCM_GETCURSEL, 0, 0), 1);

        story.clear();
        SendMessageW(sheet, PSM_PRESSBUTTON, PSBTN_OK, 0);
    });
    EXPECT_EQ(result, 1);
    EXPECT_EQ(story, (Story{"B PSN -1", "A PSN -2", "B PSN -2", "B destroy", "A destroy", "A callback 1",
                            "B callback 1"}));
    EXPECT_TRUE(IsWindowEnabled(owner));
    DestroyWindow(owner);
}

TEST_F(PropertySheets, StayOpenWhenAPageObjects) {
    const INT_PTR result = RunSheet(nullptr, [](HWND sheet, const HWND pages[2]) {
        answers["A PSN -1"] = TRUE;
        EXPECT_FALSE(SendMessageW(sheet, PSM_SETCURSEL, 1, 0));
        EXPECT_EQ(story, (Story{"A PSN -1"}));
        answers.clear();
        EXPECT_TRUE(SendMessageW(sheet, PSM_SETCURSEL, 1, 0));

        for (const auto& [answer, shown] : {std::pair{PSNRET_INVALID_NOCHANGEPAGE, 1}, {PSNRET_INVALID, 0}}) {
            story.clear();
            answers["A PSN -2"] = answer;
            SendMessageW(sheet, PSM_PRESSBUTTON, PSBTN_OK, 0);
            EXPECT_EQ(story, (Story{"B PSN -1", "A PSN -2"})) << "the pages after it are not asked";
            EXPECT_TRUE(IsWindowVisible(pages[shown]));
        }
        answers["A PSN -9"] = TRUE;
        story.clear();
        PostMessageW(sheet, WM_CLOSE, 0, 0);
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            DispatchMessageW(&message);
        }
        EXPECT_EQ(story, (Story{"A PSN -9"}));
        answers.clear();
        SendMessageW(sheet, PSM_PRESSBUTTON, PSBTN_CANCEL, 0);
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(story, (Story{"A PSN -9", "A PSN -9", "A PSN -3", "B PSN -3", "B destroy", "A destroy",
                            "A callback 1", "B callback 1"}));
}

TEST_F(PropertySheets, OfAnotherSizeAreRefused) {
    PROPSHEETHEADERW header{};
    header.dwSize = sizeof header - 1;
    EXPECT_EQ(PropertySheetW(&header), -1);
    header.dwSize = sizeof header;
    EXPECT_EQ(PropertySheetW(&header), -1) << "no pages";
    PROPSHEETPAGEW page{};
    page.dwSize = sizeof page + 1;
    EXPECT_EQ(CreatePropertySheetPageW(&page), nullptr);
    EXPECT_FALSE(DestroyPropertySheetPage(nullptr));
}

}  // namespace
