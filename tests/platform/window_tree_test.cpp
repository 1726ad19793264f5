#include <windows.h>

#include <gtest/gtest.h>

#include "platform/inspect.h"
#include "tests/platform/window_recorder.h"

namespace {

using namespace window_test;

std::vector<int> Identifiers(HWND parent) {
    std::vector<int> identifiers;
    EnumChildWindows(
        parent,
        [](HWND window, LPARAM list) {
            reinterpret_cast<std::vector<int>*>(list)->push_back(GetDlgCtrlID(window));
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&identifiers));
    return identifiers;
}

TEST(Windows, AreDestroyedFromTheTopAndTheirHandlesGoBad) {
    const platform::Usage before = platform::CurrentUsage();
    Recorder recorder;
    const HWND top = recorder.Make(WS_POPUP | WS_VISIBLE, nullptr, 1);
    const HWND child = recorder.Make(WS_CHILD | WS_VISIBLE, top, 2);
    const HWND grandchild = recorder.Make(WS_CHILD | WS_VISIBLE, child, 3);
    const HWND owned = recorder.Make(WS_POPUP, child, 4);
    EXPECT_EQ(GetParent(owned), top) << "an owner is a top-level window";
    EXPECT_EQ(GetWindow(owned, GW_OWNER), top);
    EXPECT_TRUE(IsChild(top, grandchild));
    EXPECT_FALSE(IsChild(top, owned));
    SetFocus(grandchild);
    SetCapture(child);
    PostMessageW(grandchild, WM_APP, 0, 0);
    SetTimer(child, 1, 1000, nullptr);

    recorder.Take({});
    EXPECT_TRUE(DestroyWindow(top));
    EXPECT_EQ(recorder.Take({WM_DESTROY, WM_NCDESTROY, WM_APP}), (std::vector<Told>{{4, WM_DESTROY},
                                                                                    {4, WM_NCDESTROY},
                                                                                    {1, WM_DESTROY},
                                                                                    {2, WM_DESTROY},
                                                                                    {3, WM_DESTROY},
                                                                                    {3, WM_NCDESTROY},
                                                                                    {2, WM_NCDESTROY},
                                                                                    {1, WM_NCDESTROY}}));
    RunPosted();
    EXPECT_TRUE(recorder.Take({WM_APP}).empty());
    for (const HWND window : {top, child, grandchild, owned}) {
        EXPECT_FALSE(IsWindow(window));
    }
    EXPECT_EQ(GetFocus(), nullptr);
    EXPECT_EQ(GetCapture(), nullptr);
    EXPECT_FALSE(SetWindowTextW(child, u"gone"));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_WINDOW_HANDLE});
    EXPECT_FALSE(PostMessageW(child, WM_APP, 0, 0));
    EXPECT_EQ(platform::CurrentUsage(), before);
}

TEST(Windows, ThatRefuseToBeMadeLeaveNothingBehind) {
    const platform::Usage before = platform::CurrentUsage();
    Recorder recorder;
    for (const auto& [message, refusal] : std::map<UINT, LRESULT>{{WM_NCCREATE, FALSE}, {WM_CREATE, -1}}) {
        const LRESULT answer = refusal;
        recorder.Handlers = {{message, [answer](HWND, WPARAM, LPARAM) { return answer; }}};
        EXPECT_EQ(recorder.Make(WS_POPUP, nullptr, 1), nullptr);
    }
    recorder.Handlers.clear();
    EXPECT_EQ(recorder.Make(WS_CHILD, nullptr, 1), nullptr) << "a child needs a parent";
    EXPECT_EQ(
        CreateWindowExW(0, u"No such class", u"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr),
        nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_CANNOT_FIND_WND_CLASS});
    EXPECT_EQ(platform::CurrentUsage(), before);
}

TEST(Windows, LieInAnOrder) {
    Recorder recorder;
    const HWND top = recorder.Make(WS_POPUP, nullptr, 1);
    for (const int id : {2, 3, 4}) {
        recorder.Make(WS_CHILD, top, id);
    }
    SetWindowPos(GetDlgItem(top, 2), GetDlgItem(top, 3), 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    EXPECT_EQ(Identifiers(top), (std::vector<int>{3, 2, 4}));
    SetWindowPos(GetDlgItem(top, 3), HWND_BOTTOM, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    EXPECT_EQ(Identifiers(top), (std::vector<int>{2, 4, 3}));

    const HWND pinned = recorder.Make(WS_POPUP, nullptr, 5);
    SetWindowPos(pinned, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    BringWindowToTop(top);
    EXPECT_EQ(GetTopWindow(nullptr), pinned);
    SetWindowPos(pinned, HWND_NOTOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    BringWindowToTop(top);
    EXPECT_EQ(GetTopWindow(nullptr), top);
    EXPECT_EQ(GetWindow(top, GW_HWNDNEXT), pinned);
    DestroyWindow(pinned);
    DestroyWindow(top);
}

TEST(Windows, PassFocusAndCaptureOn) {
    Recorder recorder;
    const HWND top = recorder.Make(WS_POPUP | WS_VISIBLE, nullptr, 1);
    const HWND first = recorder.Make(WS_CHILD | WS_VISIBLE, top, 2);
    const HWND second = recorder.Make(WS_CHILD | WS_VISIBLE, top, 3);
    recorder.Take({});
    SetFocus(first);
    SetFocus(second);
    EXPECT_EQ(recorder.Take({WM_SETFOCUS, WM_KILLFOCUS}),
              (std::vector<Told>{{1, WM_KILLFOCUS}, {2, WM_SETFOCUS}, {2, WM_KILLFOCUS}, {3, WM_SETFOCUS}}));
    EnableWindow(second, FALSE);
    EXPECT_EQ(GetFocus(), nullptr);
    SetFocus(first);
    ShowWindow(first, SW_HIDE);
    EXPECT_EQ(GetFocus(), top);

    SetCapture(first);
    EXPECT_EQ(SetCapture(second), first);
    ReleaseCapture();
    EXPECT_EQ(recorder.Take({WM_CAPTURECHANGED}),
              (std::vector<Told>{{2, WM_CAPTURECHANGED}, {3, WM_CAPTURECHANGED}}));
    DestroyWindow(top);
}

TEST(Windows, OfAThreadEndWithIt) {
    const platform::Usage before = platform::CurrentUsage();
    HWND made[2] = {};
    const auto make = [](void* windows) -> DWORD {
        auto* const pair = static_cast<HWND*>(windows);
        pair[0] =
            CreateWindowExW(0, u"#32770", u"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
        SetTimer(pair[0], 1, 1000, nullptr);
        return pair[0] != nullptr ? 0 : 1;
    };
    const HANDLE thread = CreateThread(nullptr, 0, make, made, 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    EXPECT_NE(made[0], nullptr);
    EXPECT_FALSE(IsWindow(made[0]));
    EXPECT_EQ(SendMessageW(made[0], WM_GETTEXTLENGTH, 0, 0), 0);
    EXPECT_EQ(platform::CurrentUsage(), before);
}

}  // namespace
