// TrackPopupMenu: an open menu takes the keys and clicks of its thread until an item is chosen or the menu
// is closed. All other messages are dispatched meanwhile.
#include <algorithm>

#include "platform/window/gui_thread.h"
#include "platform/window/menu/menu.h"
#include "platform/window/mnemonic.h"
#include "platform/window/private_messages.h"

namespace platform {

namespace {

// The size of items: nothing is drawn, but clicks need places.
constexpr int MenuItemHeight = 19;
constexpr int MenuWidth = 200;

constexpr int NoEntry = -1;

class PopupMenu {
public:
    PopupMenu(HMENU menu, HWND owner, UINT flags, POINT place);
    ~PopupMenu();
    PopupMenu(const PopupMenu&) = delete;
    PopupMenu& operator=(const PopupMenu&) = delete;

    // The item that was chosen; null when the menu was closed without a choice.
    const MenuItem* Run();

private:
    bool Takes(const MSG& message);
    bool UseKey(WPARAM key);
    void UseLetter(WCHAR letter);
    void Click(POINT screen, bool released);
    void Move(int step);
    void Highlight(int index);
    void Choose(int index);
    void GiveUp() { over_ = true; }

    const HMENU menu_;
    const HWND owner_;
    const bool silent_;  // the owner is not told
    const HWND previousCapture_;
    std::vector<MenuItem> items_;
    HWND window_ = nullptr;
    int highlighted_ = NoEntry;
    int chosen_ = NoEntry;
    bool over_ = false;
};

PopupMenu::PopupMenu(HMENU menu, HWND owner, UINT flags, POINT place)
    : menu_(menu), owner_(owner), silent_((flags & TPM_NONOTIFY) != 0), previousCapture_(GetCapture()) {
    CurrentGuiThread().OpenMenu = menu;
    if (!silent_) {
        SendMessageW(owner_, WM_ENTERMENULOOP, TRUE, 0);
        SendMessageW(owner_, WM_INITMENU, reinterpret_cast<WPARAM>(menu_), 0);
        SendMessageW(owner_, WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(menu_), 0);
    }
    items_ = MenuItems(menu_).value_or(std::vector<MenuItem>());
    window_ =
        CreateWindowExW(WS_EX_TOPMOST, u"#32768", nullptr, WS_POPUP, place.x, place.y, MenuWidth,
                        static_cast<int>(items_.size()) * MenuItemHeight, owner_, nullptr, nullptr, menu_);
    ShowWindow(window_, SW_SHOWNOACTIVATE);
    SetCapture(owner_);
}

PopupMenu::~PopupMenu() {
    if (GetCapture() == owner_) {
        SetCapture(previousCapture_);
    }
    DestroyWindow(window_);
    if (!silent_) {
        SendMessageW(owner_, WM_MENUSELECT, MAKEWPARAM(0, 0xFFFF), 0);
        SendMessageW(owner_, WM_EXITMENULOOP, TRUE, 0);
    }
    CurrentGuiThread().OpenMenu = nullptr;
}

const MenuItem* PopupMenu::Run() {
    MSG message;
    while (!over_ && IsWindow(owner_)) {
        if (!GetMessageW(&message, nullptr, 0, 0)) {
            PostQuitMessage(static_cast<int>(message.wParam));
            break;
        }
        if (!Takes(message)) {
            DispatchMessageW(&message);
        }
    }
    return chosen_ != NoEntry ? &items_[static_cast<size_t>(chosen_)] : nullptr;
}

bool PopupMenu::Takes(const MSG& message) {
    switch (message.message) {
    case WM_KEYDOWN:
    case WM_SYSKEYDOWN:
        if (!UseKey(message.wParam)) {
            TranslateMessage(&message);
        }
        return true;
    case WM_CHAR:
    case WM_SYSCHAR:
        UseLetter(static_cast<WCHAR>(message.wParam));
        return true;
    case WM_LBUTTONDOWN:
    case WM_RBUTTONDOWN:
    case WM_LBUTTONUP:
    case WM_RBUTTONUP: {
        POINT place = {static_cast<SHORT>(LOWORD(message.lParam)),
                       static_cast<SHORT>(HIWORD(message.lParam))};
        ClientToScreen(message.hwnd, &place);
        Click(place, message.message == WM_LBUTTONUP || message.message == WM_RBUTTONUP);
        return true;
    }
    case WM_CANCELMODE:
        GiveUp();
        return true;
    default:
        return (message.message >= WM_KEYFIRST && message.message <= WM_KEYLAST) ||
               (message.message >= WM_MOUSEFIRST && message.message <= WM_MOUSELAST);
    }
}

// False when the key may still be a letter.
bool PopupMenu::UseKey(WPARAM key) {
    switch (key) {
    case VK_ESCAPE:
    case VK_MENU:
    case VK_F10:
        GiveUp();
        return true;
    case VK_DOWN:
        Move(1);
        return true;
    case VK_UP:
        Move(-1);
        return true;
    case VK_HOME:
        highlighted_ = NoEntry;
        Move(1);
        return true;
    case VK_END:
        highlighted_ = NoEntry;
        Move(-1);
        return true;
    case VK_RETURN:
        Choose(highlighted_);
        return true;
    default:
        return false;
    }
}

// Moves the highlight to the next item in this direction that is no separator, and around at the ends. When
// nothing is highlighted, down begins at the first item and up at the last.
void PopupMenu::Move(int step) {
    const int count = static_cast<int>(items_.size());
    int index = highlighted_ == NoEntry && step < 0 ? 0 : highlighted_;
    for (int i = 0; i < count; ++i) {
        index = (index + step + count) % count;
        if (items_[static_cast<size_t>(index)].CanBeHighlighted()) {
            Highlight(index);
            return;
        }
    }
}

void PopupMenu::Highlight(int index) {
    highlighted_ = index;
    if (!silent_) {
        const MenuItem& item = items_[static_cast<size_t>(index)];
        SendMessageW(owner_, WM_MENUSELECT, MAKEWPARAM(item.Id, item.Flags | MF_HILITE),
                     reinterpret_cast<LPARAM>(menu_));
    }
}

// A letter chooses the only item with this mnemonic. When several have it, it moves between them.
void PopupMenu::UseLetter(WCHAR letter) {
    std::vector<int> matches;
    for (size_t i = 0; i < items_.size(); ++i) {
        if (items_[i].CanBeHighlighted() && IsMnemonicOf(items_[i].Text, letter)) {
            matches.push_back(static_cast<int>(i));
        }
    }
    if (matches.size() == 1) {
        Highlight(matches.front());
        Choose(matches.front());
    } else if (!matches.empty()) {
        const auto next =
            std::find_if(matches.begin(), matches.end(), [this](int index) { return index > highlighted_; });
        Highlight(next != matches.end() ? *next : matches.front());
    }
}

// Releasing the button over an item chooses it; pressing it outside the menu closes the menu.
void PopupMenu::Click(POINT screen, bool released) {
    RECT frame;
    GetWindowRect(window_, &frame);
    if (PtInRect(&frame, screen)) {
        const int index = (screen.y - frame.top) / MenuItemHeight;
        if (items_[static_cast<size_t>(index)].CanBeHighlighted()) {
            Highlight(index);
            if (released) {
                Choose(index);
            }
        }
    } else if (!released) {
        GiveUp();
    }
}

// Nothing happens for what is grayed. Nothing highlighted ends the menu.
void PopupMenu::Choose(int index) {
    if (index == NoEntry) {
        GiveUp();
    } else if (items_[static_cast<size_t>(index)].CanBeChosen()) {
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

// The command with TPM_RETURNCMD, 0 when nothing was chosen; else TRUE, and the command is posted.
BOOL WINAPI TrackPopupMenu(HMENU menu, UINT flags, int x, int y, int, HWND owner, const RECT*) {
    if (!IsMenu(menu) || !IsWindow(owner)) {
        SetLastError(IsMenu(menu) ? ERROR_INVALID_WINDOW_HANDLE : ERROR_INVALID_MENU_HANDLE);
        return FALSE;
    }
    if (CurrentGuiThread().OpenMenu) {
        SetLastError(ERROR_POPUP_ALREADY_ACTIVE);
        return FALSE;
    }
    UINT_PTR command = 0;
    bool chosen = false;
    {
        PopupMenu popup(menu, owner, flags, {x, y});
        if (const MenuItem* const item = popup.Run()) {
            command = item->Id;
            chosen = true;
        }
    }
    if ((flags & TPM_RETURNCMD) != 0) {
        return static_cast<BOOL>(command);
    }
    if (chosen) {
        PostMessageW(owner, WM_COMMAND, MAKEWPARAM(command, 0), 0);
    }
    return TRUE;
}
