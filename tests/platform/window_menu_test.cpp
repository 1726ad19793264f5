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

}  // namespace
