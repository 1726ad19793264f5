// TrackPopupMenu: an open menu takes the keys of its thread until an item is chosen or the menu is closed.
// All other messages are dispatched meanwhile.
#include "platform/text/case.h"
#include "platform/window/menu/menu.h"
#include "platform/window/private_messages.h"

namespace platform {

namespace {

constexpr int NoEntry = -1;

class PopupMenu {
public:
    PopupMenu(HMENU menu, HWND owner);
    ~PopupMenu() { DestroyWindow(window_); }
    PopupMenu(const PopupMenu&) = delete;
    PopupMenu& operator=(const PopupMenu&) = delete;

    // The item that was chosen; null when the menu was closed without a choice.
    const MenuItem* Run();

private:
    bool Takes(const MSG& message);
    void UseKey(WPARAM key);
    void UseLetter(WCHAR letter);
    void Move(int step);
    void Choose(int index);

    const std::vector<MenuItem> items_;
    const HWND window_;
    int highlighted_ = NoEntry;
    int chosen_ = NoEntry;
    bool over_ = false;
};

PopupMenu::PopupMenu(HMENU menu, HWND owner)
    : items_(MenuItems(menu)),
      window_(CreateWindowExW(0, u"#32768", nullptr, WS_POPUP | WS_VISIBLE, 0, 0, 0, 0, owner, nullptr,
                              nullptr, menu)) {}

const MenuItem* PopupMenu::Run() {
    MSG message;
    while (!over_ && GetMessageW(&message, nullptr, 0, 0)) {
        if (!Takes(message)) {
            DispatchMessageW(&message);
        }
    }
    return chosen_ != NoEntry ? &items_[static_cast<size_t>(chosen_)] : nullptr;
}

bool PopupMenu::Takes(const MSG& message) {
    if (message.message == WM_KEYDOWN) {
        UseKey(message.wParam);
    } else if (message.message == WM_CHAR) {
        UseLetter(static_cast<WCHAR>(message.wParam));
    }
    return message.message >= WM_KEYFIRST && message.message <= WM_KEYLAST;
}

void PopupMenu::UseKey(WPARAM key) {
    switch (key) {
    case VK_ESCAPE:
        over_ = true;
        break;
    case VK_DOWN:
        Move(1);
        break;
    case VK_UP:
        Move(-1);
        break;
    case VK_RETURN:
        Choose(highlighted_);
        break;
    default:
        break;
    }
}

// Moves the highlight to the next item in this direction that is no separator, and around at the ends. When
// nothing is highlighted, down begins at the first item and up at the last.
void PopupMenu::Move(int step) {
    const int count = static_cast<int>(items_.size());
    int index = highlighted_ == NoEntry && step < 0 ? 0 : highlighted_;
    do {
        index = (index + step + count) % count;
    } while (items_[static_cast<size_t>(index)].IsSeparator());
    highlighted_ = index;
}

// The letter after the mark in an item's text chooses it.
void PopupMenu::UseLetter(WCHAR letter) {
    for (size_t i = 0; i < items_.size(); ++i) {
        const std::u16string& text = items_[i].Text;
        const size_t mark = text.find(u'&');
        if (mark != std::u16string::npos && FoldCase(text[mark + 1]) == FoldCase(letter)) {
            Choose(static_cast<int>(i));
            return;
        }
    }
}

// Nothing happens for what is grayed. Nothing highlighted ends the menu.
void PopupMenu::Choose(int index) {
    if (index == NoEntry || items_[static_cast<size_t>(index)].CanBeChosen()) {
        chosen_ = index;
        over_ = true;
    }
}

}  // namespace

LRESULT CALLBACK MenuWindowProcedure(HWND window, UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_CREATE:
        SetWindowLongPtrW(
            window, 0,
            reinterpret_cast<LONG_PTR>(reinterpret_cast<const CREATESTRUCTW*>(second)->lpCreateParams));
        return 0;
    case GetMenuMessage:
        return GetWindowLongPtrW(window, 0);
    default:
        return DefWindowProcW(window, message, first, second);
    }
}

}  // namespace platform

using namespace platform;

// The command is posted.
BOOL WINAPI TrackPopupMenu(HMENU menu, UINT, int, int, int, HWND owner, const RECT*) {
    PopupMenu popup(menu, owner);
    if (const MenuItem* const item = popup.Run()) {
        PostMessageW(owner, WM_COMMAND, MAKEWPARAM(item->Id, 0), 0);
    }
    return TRUE;
}
