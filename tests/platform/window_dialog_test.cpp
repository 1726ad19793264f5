#include <windows.h>

#include <gtest/gtest.h>

#include "platform/inspect.h"
#include "tests/platform/window_template.h"

namespace {

using window_test::TemplateBytes;

constexpr WORD Button = 0x80;
constexpr WORD Edit = 0x81;
constexpr WORD Static = 0x82;

constexpr int Name = 10;
constexpr int First = 20;  // of three radio buttons
constexpr int Last = 22;
constexpr int Check = 30;

// A dialog with a labelled edit, a group of radio buttons, a check box, OK and Cancel.
TemplateBytes SmallDialog() {
    constexpr DWORD Shown = WS_CHILD | WS_VISIBLE;
    TemplateBytes dialog(WS_POPUP | WS_CAPTION | DS_SETFONT, u"Small", {0, 0, 100, 80});
    dialog.Add(Static, 0, u"&Name", Shown | WS_GROUP, {4, 4, 40, 8});
    dialog.Add(Edit, Name, u"text", Shown | WS_TABSTOP | WS_BORDER, {50, 4, 40, 12});
    dialog.Add(Button, First, u"&A", Shown | WS_TABSTOP | WS_GROUP | BS_AUTORADIOBUTTON, {4, 20, 40, 8});
    dialog.Add(Button, First + 1, u"&B", Shown | BS_AUTORADIOBUTTON | WS_DISABLED, {4, 30, 40, 8});
    dialog.Add(Button, Last, u"&C", Shown | BS_AUTORADIOBUTTON, {4, 40, 40, 8});
    dialog.Add(Button, Check, u"C&heck", Shown | WS_TABSTOP | WS_GROUP | BS_AUTOCHECKBOX, {4, 50, 40, 8});
    dialog.Add(Button, IDOK, u"OK", Shown | WS_TABSTOP | WS_GROUP | BS_DEFPUSHBUTTON, {4, 64, 40, 12});
    dialog.Add(Button, IDCANCEL, u"Cancel", Shown | WS_TABSTOP, {50, 64, 40, 12});
    return dialog;
}

// What the dialogs below do when they are shown: keys, one after the other, to whatever has the focus.
struct Visit {
    std::vector<std::pair<UINT, WPARAM>> Keys;
    std::vector<int> FocusAfter;  // each key but the one that ends the dialog
    bool KeepsFocus = true;
    std::vector<WORD> Commands;  // IDOK and IDCANCEL end the dialog
};

Visit* visit;

void NextKey(HWND dialog) {
    const size_t done = visit->FocusAfter.size();
    if (done > 0) {
        visit->FocusAfter.back() = GetDlgCtrlID(GetFocus());
    }
    if (done < visit->Keys.size()) {
        visit->FocusAfter.push_back(0);
        PostMessageW(GetFocus(), visit->Keys[done].first, visit->Keys[done].second, 0);
        PostMessageW(dialog, WM_APP, 0, 0);
    }
}

INT_PTR CALLBACK VisitProcedure(HWND dialog, UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_INITDIALOG:
        visit = reinterpret_cast<Visit*>(second);
        PostMessageW(dialog, WM_APP, 0, 0);
        return visit->KeepsFocus ? TRUE : FALSE;
    case WM_APP:
        NextKey(dialog);
        return TRUE;
    case WM_COMMAND:
        if (HIWORD(first) == BN_CLICKED) {
            visit->Commands.push_back(LOWORD(first));
            if (LOWORD(first) == IDOK || LOWORD(first) == IDCANCEL) {
                EndDialog(dialog, 100 + LOWORD(first));
            }
        }
        return TRUE;
    default:
        return FALSE;
    }
}

INT_PTR RunDialog(const TemplateBytes& dialog, Visit* keys) {
    return DialogBoxIndirectParamW(nullptr, dialog.Get(), nullptr, VisitProcedure,
                                   reinterpret_cast<LPARAM>(keys));
}

TEST(Dialogs, MoveTheFocusByKeys) {
    const platform::Usage before = platform::CurrentUsage();
    Visit keys;
    keys.Keys = {{WM_KEYDOWN, VK_TAB},   {WM_KEYDOWN, VK_DOWN}, {WM_KEYDOWN, VK_RIGHT}, {WM_KEYDOWN, VK_UP},
                 {WM_KEYDOWN, VK_TAB},   {WM_CHAR, u'n'},       {WM_CHAR, u'h'},        {WM_SYSCHAR, u'C'},
                 {WM_SYSCHAR, u'h'},     {WM_KEYDOWN, VK_TAB},  {WM_KEYDOWN, VK_TAB},   {WM_KEYDOWN, VK_TAB},
                 {WM_KEYDOWN, VK_ESCAPE}};
    EXPECT_EQ(RunDialog(SmallDialog(), &keys), 100 + IDCANCEL);
    // The disabled radio button is passed over, and the group goes round. In the edit "h" is a letter;
    // everywhere else, and with Alt there too, it is a mnemonic.
    EXPECT_EQ(keys.FocusAfter, (std::vector<int>{First, Last, First, Last, Check, Name, Name, Last, Check,
                                                 IDOK, IDCANCEL, Name, 0}))
        << "0: that key ended it";
    EXPECT_EQ(keys.Commands, (std::vector<WORD>{Last, First, Last, Last, Check, IDCANCEL}));
    EXPECT_EQ(platform::CurrentUsage(), before);
}

TEST(Dialogs, PressTheRightButtonOnEnter) {
    Visit inEdit;
    inEdit.Keys = {{WM_KEYDOWN, VK_RETURN}};
    EXPECT_EQ(RunDialog(SmallDialog(), &inEdit), 100 + IDOK);
    Visit onCancel;
    onCancel.Keys = {{WM_KEYDOWN, VK_TAB},
                     {WM_KEYDOWN, VK_TAB},
                     {WM_KEYDOWN, VK_TAB},
                     {WM_KEYDOWN, VK_TAB},
                     {WM_KEYDOWN, VK_RETURN}};
    EXPECT_EQ(RunDialog(SmallDialog(), &onCancel), 100 + IDCANCEL);
}

INT_PTR CALLBACK AnswerProcedure(HWND dialog, UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_APP:
        SetWindowLongPtrW(dialog, DWLP_MSGRESULT, second);
        return static_cast<INT_PTR>(first);
    case WM_INITDIALOG:
        SetWindowLongPtrW(dialog, static_cast<int>(DWLP_USER), second);
        return FALSE;
    default:
        return FALSE;
    }
}

TEST(Dialogs, AnswerThroughTheirResultWordAndKnowTheirDefaultButton) {
    const HWND dialog = CreateDialogIndirectParamW(nullptr, SmallDialog().Get(), nullptr, AnswerProcedure, 5);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(GetWindowLongPtrW(dialog, static_cast<int>(DWLP_USER)), 5);
    EXPECT_EQ(SendMessageW(dialog, WM_APP, TRUE, 99), 99);
    EXPECT_EQ(SendMessageW(dialog, WM_APP, FALSE, 99), 0);
    EXPECT_EQ(SendMessageW(dialog, DM_GETDEFID, 0, 0), MAKELONG(IDOK, DC_HASDEFID));
    SendMessageW(dialog, DM_SETDEFID, IDCANCEL, 0);
    EXPECT_EQ(SendMessageW(dialog, DM_GETDEFID, 0, 0), MAKELONG(IDCANCEL, DC_HASDEFID));
    EXPECT_FALSE(IsWindowVisible(dialog));
    DestroyWindow(dialog);
}

TEST(Dialogs, TakeTheirSizesFromTheFont) {
    const HWND dialog = CreateDialogIndirectParamW(nullptr, SmallDialog().Get(), nullptr, AnswerProcedure, 0);
    RECT client;
    GetClientRect(dialog, &client);
    EXPECT_EQ(client.right, 100 * 6 / 4);
    EXPECT_EQ(client.bottom, 80 * 13 / 8);
    RECT edit;
    GetWindowRect(GetDlgItem(dialog, Name), &edit);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&edit), 2);
    EXPECT_EQ(edit.left, 75);
    EXPECT_EQ(edit.top, 7) << "6.5 is rounded up";
    LOGFONTW font;
    const auto used = reinterpret_cast<HFONT>(SendDlgItemMessageW(dialog, Name, WM_GETFONT, 0, 0));
    EXPECT_NE(GetObjectW(used, sizeof font, &font), 0);
    EXPECT_EQ(font.lfHeight, -11);
    DestroyWindow(dialog);
}

TEST(Dialogs, ThatCannotBeMadeWholeAreNotMade) {
    const platform::Usage before = platform::CurrentUsage();
    TemplateBytes dialog = SmallDialog();
    dialog.Add(0x99, 1, u"no such class", WS_CHILD, {0, 0, 1, 1});
    Visit nothing;
    EXPECT_EQ(RunDialog(dialog, &nothing), -1);
    EXPECT_EQ(CreateDialogParamW(nullptr, MAKEINTRESOURCEW(1), nullptr, AnswerProcedure, 0), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_RESOURCE_NAME_NOT_FOUND});
    EXPECT_EQ(platform::CurrentUsage(), before);
}

}  // namespace
