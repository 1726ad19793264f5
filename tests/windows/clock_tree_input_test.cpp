// The clock tree under the system's own mouse and keyboard, from the press of a button to what the system
// shows of it.
#include <windows.h>
#include <commctrl.h>

#include <functional>
#include <thread>

#include "config_ui/resource.h"
#include "tests/support/clock_tree_user.h"
#include "tests/support/sheet_test.h"

namespace {

constexpr ULONGLONG LongestWait = 20000;  // ms, before something that does not come is a failure

const std::u16string Free = u" (internal clock)";

class ClockTreeInput : public SheetTest {
protected:
    ClockTreeInput() : SheetTest(2) {
        for (unsigned card = 0; card < 2; ++card) {
            StoreText(card, TEXT("Name"), card == 0 ? u"A" : u"B");
            StoreSetting(card, TEXT("ClockSource"), 0);
        }
        page_.emplace(Open().Show(u"Clocks + Sync"));
        SetForegroundWindow(GetParent(page_->Window()));
        page_->Focus(IDC_CLOCK_TREE);
        tree_.emplace(page_->Window());
        HearTheDisplayOut();
    }

    ClockTreeUser& Tree() { return *tree_; }

    // Nothing tells when input has been dealt with.
    static void Await(const char* what, const std::function<bool()>& condition) {
        const ULONGLONG end = GetTickCount64() + LongestWait;
        while (!condition()) {
            ASSERT_LT(GetTickCount64(), end) << what;
            std::this_thread::yield();
        }
    }

    // When a window comes or goes under the pointer, Wine's display reports its own pointer and its own keys,
    // of which none is down. The window's thread hears of it some time later, and a Shift that is injected
    // before that is released again. Asking for the pointer brings in what there is to report, but Wine asks
    // its display only when the pointer has been still for a tenth of a second.
    void HearTheDisplayOut() {
        Sleep(200);
        Tree().OnItsThread([] {
            POINT pointer = {};
            GetCursorPos(&pointer);
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 0, QS_ALLINPUT);
        });
    }

    void MoveTo(const std::u16string& place) {
        Tree().PointAt(place);
        Mouse(MOUSEEVENTF_MOVE);
    }
    static void Mouse(DWORD event) { mouse_event(event, 0, 0, 0, 0); }
    static void Key(BYTE key) {
        keybd_event(key, 0, 0, 0);
        keybd_event(key, 0, KEYEVENTF_KEYUP, 0);
    }

    static HCURSOR CursorShown() {
        CURSORINFO info = {};
        info.cbSize = sizeof info;
        GetCursorInfo(&info);
        return info.hCursor;
    }
    HWND MouseOwner() const {
        GUITHREADINFO info = {};
        info.cbSize = sizeof info;
        GetGUIThreadInfo(GetWindowThreadProcessId(page_->Window(), nullptr), &info);
        return info.hwndCapture;
    }

    // Wine loses a move that comes while the tree's thread has the one before in hand, so each is repeated
    // until it shows.
    void PickUpAndCarry(const std::u16string& card, const std::u16string& place) {
        MoveTo(card);
        Mouse(MOUSEEVENTF_LEFTDOWN);
        Await("the drag", [&] {
            MoveTo(place);
            return MouseOwner() == page_->Window();
        });
        Await("where the card would be dropped", [&] {
            MoveTo(place);
            return Tree().Highlighted().starts_with(place);
        });
    }

    std::vector<std::u16string> AwaitMenu() {
        std::vector<std::u16string> lines;
        Await("a menu", [&] {
            lines = Tree().OpenedMenu();
            return !lines.empty();
        });
        return lines;
    }

private:
    std::optional<SheetPage> page_;
    std::optional<ClockTreeUser> tree_;
};

TEST_F(ClockTreeInput, ACardIsDraggedWithItsCursor) {
    const HCURSOR usual = LoadCursorW(nullptr, IDC_ARROW);
    MoveTo(u"B");
    Await("the usual cursor", [&] { return CursorShown() == usual; });
    PickUpAndCarry(u"B", u"A");
    EXPECT_NE(CursorShown(), usual);
    Mouse(MOUSEEVENTF_LEFTUP);
    Await("the end of the drag", [&] { return MouseOwner() == nullptr; });
    EXPECT_EQ(Tree().Outline(), u"A" + Free + u" [B]");
    Await("the usual cursor", [&] { return CursorShown() == usual; });

    PickUpAndCarry(u"B", ClockTreeUser::Root);
    Key(VK_ESCAPE);
    Await("the end of the drag", [&] { return MouseOwner() == nullptr; });
    Mouse(MOUSEEVENTF_LEFTUP);
    EXPECT_EQ(Tree().Highlighted(), u"");
    EXPECT_EQ(Tree().Outline(), u"A" + Free + u" [B]");
}

TEST_F(ClockTreeInput, MouseAndKeysOpenTheMenu) {
    MoveTo(u"B");
    Mouse(MOUSEEVENTF_RIGHTDOWN);
    Mouse(MOUSEEVENTF_RIGHTUP);
    const std::vector<std::u16string> menu = AwaitMenu();
    EXPECT_EQ(menu.size(), 7u);
    Key('D');
    Await("the command", [&] { return Tree().Outline() == u"A" + Free + u"; B (digital input clock)"; });

    HearTheDisplayOut();
    keybd_event(VK_SHIFT, 0, 0, 0);
    Key(VK_F10);
    const std::vector<std::u16string> again = AwaitMenu();
    keybd_event(VK_SHIFT, 0, KEYEVENTF_KEYUP, 0);
    EXPECT_EQ(again.size(), menu.size());
    Key('B');
    Await("the command", [&] { return Tree().Outline() == u"B (digital input clock) [A]"; });
}

}  // namespace
