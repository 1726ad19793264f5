// What all controls have in common: a state that is made and freed with the window, and notifications to the
// parent.
#pragma once

#include <windows.h>
#include <commctrl.h>

#include <memory>
#include <string>
#include <string_view>

namespace platform {

// Nothing is drawn, but places depend on how wide a text is.
constexpr int CharacterWidth = 6;

// A control's state. Used only on the thread that made the window.
class Control {
public:
    explicit Control(HWND window) : window_(window) {}
    virtual ~Control() = default;
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    virtual LRESULT Handle(UINT message, WPARAM first, LPARAM second) = 0;

protected:
    HWND Window() const { return window_; }
    DWORD Style() const;
    LRESULT Default(UINT message, WPARAM first, LPARAM second);  // the default answer to a message

    // WM_COMMAND and WM_NOTIFY to the parent. The parent may destroy the control meanwhile.
    void Command(WORD notification) const;
    LRESULT Notify(UINT code) const;
    LRESULT Notify(UINT code, NMHDR& header) const;

private:
    const HWND window_;
};

// The window procedure of a control class whose state is a T. The class reserves extra bytes for one pointer.
template <typename T>
LRESULT CALLBACK ControlProcedure(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message == WM_NCCREATE) {
        auto* held = new std::shared_ptr<Control>(std::make_shared<T>(window));
        SetWindowLongPtrW(window, 0, reinterpret_cast<LONG_PTR>(held));
    }
    auto* held = reinterpret_cast<std::shared_ptr<Control>*>(GetWindowLongPtrW(window, 0));
    if (!held) {
        return DefWindowProcW(window, message, first, second);
    }
    // Keeps the state alive when handling the message destroys the window.
    const std::shared_ptr<Control> control = *held;
    const LRESULT result = control->Handle(message, first, second);
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(window, 0, 0);
        delete held;
    }
    return result;
}

// The pointer's place as a mouse message tells it.
POINT PointOf(LPARAM place);

// As WM_GETTEXT answers: cut to size, which counts the terminator and is not 0; the number of characters
// copied.
LRESULT CopyText(std::u16string_view text, LPWSTR target, size_t size);

}  // namespace platform
