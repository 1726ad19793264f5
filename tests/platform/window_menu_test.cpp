#include <windows.h>

#include <gtest/gtest.h>

#include "platform/inspect.h"
#include "tests/platform/window_recorder.h"

namespace {

using namespace window_test;

// Two choices with one mnemonic, a line, a grayed one, a last one.
HMENU MakeMenu() {
    const HMENU menu = CreatePopupMenu();
    AppendMenuW(menu, MF_STRING, 11, u"&First");
    AppendMenuW(menu, MF_STRING, 12, u"A &fine second");
    AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    AppendMenuW(menu, MF_STRING | MF_GRAYED, 13, u"&Grayed");
    AppendMenuW(menu, MF_STRING, 14, u"&Last");
    return menu;
}

TEST(Menus, AreWorkedByKeys) {
    struct Case {
        std::vector<std::pair<UINT, WPARAM>> Keys;
        BOOL Command;
    };
    const std::pair<UINT, WPARAM> down{WM_KEYDOWN, VK_DOWN}, up{WM_KEYDOWN, VK_UP},
        enter{WM_KEYDOWN, VK_RETURN}, escape{WM_KEYDOWN, VK_ESCAPE};
    const Case cases[] = {
        {{down, enter}, 11},
        {{down, down, enter}, 12},
        {{up, enter}, 14},
        {{up, down, enter}, 11},
        {{down, down, down, down, enter}, 14},
        {{up, up, enter, escape}, 0},  // a grayed one is come to, but not chosen
        {{down, escape}, 0},
        {{{WM_CHAR, u'l'}}, 14},
        {{{WM_KEYDOWN, 'L'}}, 14},
        {{{WM_CHAR, u'f'}, {WM_CHAR, u'f'}, enter}, 12},
        {{{WM_CHAR, u'x'}, {WM_CHAR, u'g'}, escape}, 0},
    };
    const platform::Usage before = platform::CurrentUsage();
    Recorder recorder;
    const HWND owner = recorder.Make(WS_POPUP | WS_VISIBLE, nullptr, 1);
    const HMENU menu = MakeMenu();
    for (const Case& example : cases) {
        for (const auto& [message, key] : example.Keys) {
            PostMessageW(owner, message, key, 0);
        }
        EXPECT_EQ(TrackPopupMenu(menu, TPM_RETURNCMD, 0, 0, 0, owner, nullptr), example.Command)
            << "case " << &example - cases;
        RunPosted();
        EXPECT_TRUE(recorder.Take({WM_KEYDOWN, WM_CHAR, WM_COMMAND}).empty()) << "the menu took all keys";
    }
    DestroyMenu(menu);
    DestroyWindow(owner);
    EXPECT_EQ(platform::CurrentUsage(), before);
}

TEST(Menus, TellTheirOwner) {
    Recorder recorder;
    const HWND owner = recorder.Make(WS_POPUP | WS_VISIBLE, nullptr, 1);
    const HMENU menu = MakeMenu();
    WORD command = 0;
    recorder.Handlers[WM_INITMENUPOPUP] = [menu](HWND, WPARAM given, LPARAM) -> LRESULT {
        EXPECT_EQ(reinterpret_cast<HMENU>(given), menu);
        EnableMenuItem(menu, 13, MF_ENABLED);
        return 0;
    };
    recorder.Handlers[WM_COMMAND] = [&command](HWND, WPARAM first, LPARAM) -> LRESULT {
        command = LOWORD(first);
        return 0;
    };
    PostMessageW(owner, WM_APP, 0, 0);
    PostMessageW(owner, WM_CHAR, u'g', 0);
    EXPECT_TRUE(TrackPopupMenu(menu, TPM_RIGHTBUTTON, 0, 0, 0, owner, nullptr));
    EXPECT_EQ(command, 0) << "the command is posted";
    EXPECT_EQ(recorder.Take({WM_ENTERMENULOOP, WM_APP, WM_EXITMENULOOP}),
              (std::vector<Told>{{1, WM_ENTERMENULOOP}, {1, WM_APP}, {1, WM_EXITMENULOOP}}));
    RunPosted();
    EXPECT_EQ(command, 13);
    EXPECT_EQ(GetCapture(), nullptr);
    DestroyMenu(menu);
    DestroyWindow(owner);
}

TEST(Menus, KeepTheStatesOfTheirItems) {
    const HMENU menu = MakeMenu();
    EXPECT_EQ(CheckMenuItem(menu, 11, MF_CHECKED), DWORD{MF_UNCHECKED});
    EXPECT_EQ(CheckMenuItem(menu, 0, MF_BYPOSITION | MF_CHECKED), DWORD{MF_CHECKED});
    EXPECT_EQ(EnableMenuItem(menu, 11, MF_GRAYED), MF_ENABLED);
    EXPECT_EQ(GetMenuState(menu, 11, MF_BYCOMMAND), UINT{MF_CHECKED | MF_GRAYED});
    EXPECT_EQ(GetMenuState(menu, 2, MF_BYPOSITION), UINT{MF_SEPARATOR});
    EXPECT_EQ(GetMenuState(menu, 99, MF_BYCOMMAND), 0xFFFFFFFF);
    InsertMenuW(menu, 12, MF_STRING, 15, u"Between");
    EXPECT_EQ(GetMenuItemID(menu, 1), 15u);
    EXPECT_EQ(GetMenuItemCount(menu), 6);
    EXPECT_TRUE(DestroyMenu(menu));
    EXPECT_FALSE(DestroyMenu(menu));
    EXPECT_EQ(GetMenuItemCount(menu), -1);
}

}  // namespace
