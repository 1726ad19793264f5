// Windows of other processes.
#include <windows.h>

#include <gtest/gtest.h>

#include "tests/platform/services_process.h"
#include "tests/processes/companion.h"

namespace {

HWND MakeNamed(const char16_t* title) {
    return CreateWindowExW(0, u"Button", title, WS_POPUP | WS_VISIBLE, 0, 0, 9, 9, nullptr, nullptr, nullptr,
                           nullptr);
}

// Looks at messages until one of that number is there; that is not dispatched.
void AwaitPosted(UINT wanted) {
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) && message.message != wanted) {
        DispatchMessageW(&message);
    }
}

TEST(ForeignWindows, AreFoundShownBroughtToTheFrontAndPostedTo) {
    const services_test::NamedMachine machine;
    Companion companion([](Companion& test) {
        const HWND window = MakeNamed(u"The other's");
        ShowWindow(window, SW_MINIMIZE);
        test.Tell(1);
        AwaitPosted(WM_APP);
        test.Tell(IsIconic(window));
        const LONG_PTR exStyle = GetWindowLongPtrW(window, GWL_EXSTYLE);
        test.Tell((exStyle & WS_EX_TOPMOST) != 0 ? 1 : 0);
        test.Hear();
        DestroyWindow(window);
        test.Tell(1);
        test.Hear();
    });
    companion.Hear();
    const HWND own = MakeNamed(u"Own");
    const HWND foreign = FindWindowW(nullptr, u"The other's");
    ASSERT_NE(foreign, nullptr);
    EXPECT_EQ(FindWindowW(u"button", u"the OTHER'S"), foreign);
    EXPECT_EQ(FindWindowW(u"Edit", u"The other's"), nullptr);
    EXPECT_TRUE(IsWindow(foreign));
    EXPECT_TRUE(IsIconic(foreign));
    EXPECT_EQ(GetForegroundWindow(), own);

    ShowWindow(foreign, SW_RESTORE);
    EXPECT_FALSE(IsIconic(foreign));
    constexpr UINT Stay = SWP_NOMOVE | SWP_NOSIZE | SWP_SHOWWINDOW;
    EXPECT_TRUE(SetWindowPos(foreign, HWND_TOPMOST, 0, 0, 0, 0, Stay));
    EXPECT_TRUE(SetWindowPos(foreign, HWND_NOTOPMOST, 0, 0, 0, 0, Stay));
    EXPECT_EQ(GetForegroundWindow(), foreign);
    SetForegroundWindow(own);
    EXPECT_EQ(GetForegroundWindow(), own) << "it did not stay topmost";
    EXPECT_TRUE(PostMessageW(foreign, WM_APP, 0, 0));
    EXPECT_EQ(companion.Hear(), 0);
    EXPECT_EQ(companion.Hear(), 0);

    companion.Tell(1);
    companion.Hear();
    EXPECT_FALSE(IsWindow(foreign));
    EXPECT_FALSE(ShowWindow(foreign, SW_SHOW));
    EXPECT_FALSE(PostMessageW(foreign, WM_APP, 0, 0));
    companion.Tell(1);
    DestroyWindow(own);
}

TEST(ForeignWindows, GoWithTheirProcess) {
    const services_test::NamedMachine machine;
    Companion companion([](Companion& test) {
        MakeNamed(u"Left behind");
        test.Tell(1);
        test.Hear();
    });
    companion.Hear();
    const HWND foreign = FindWindowW(nullptr, u"Left behind");
    EXPECT_NE(foreign, nullptr);
    companion.Kill();
    EXPECT_EQ(FindWindowW(nullptr, u"Left behind"), nullptr);
    EXPECT_FALSE(SetWindowPos(foreign, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE));
}

}  // namespace
