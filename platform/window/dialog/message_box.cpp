// Message boxes without a screen: each call is recorded and answered at once with a button that the
// box really has.
#include <windows.h>

#include <algorithm>
#include <initializer_list>
#include <mutex>
#include <vector>

#include "platform/inspect.h"

namespace platform {

namespace {

struct Boxes {
    std::mutex Lock;  // guards the rest
    std::vector<MessageBoxRecord> Shown;
    int Answer = IDOK;
};

Boxes& TheBoxes() {
    static Boxes boxes;
    return boxes;
}

// The buttons of each MB_TYPEMASK. The first is pressed when the box does not have the wanted one.
std::initializer_list<int> ButtonsOf(UINT style) {
    static constexpr std::initializer_list<int> ButtonChoices[] = {
        {IDOK},                        // MB_OK
        {IDOK, IDCANCEL},              // MB_OKCANCEL
        {IDABORT, IDRETRY, IDIGNORE},  // MB_ABORTRETRYIGNORE
        {IDYES, IDNO, IDCANCEL},       // MB_YESNOCANCEL
        {IDYES, IDNO},                 // MB_YESNO
        {IDRETRY, IDCANCEL},           // MB_RETRYCANCEL
    };
    const UINT type = style & MB_TYPEMASK;
    return type < std::size(ButtonChoices) ? ButtonChoices[type] : std::initializer_list<int>{};
}

}  // namespace

std::vector<MessageBoxRecord> MessageBoxes() {
    const std::lock_guard hold(TheBoxes().Lock);
    return TheBoxes().Shown;
}

void ClearMessageBoxes() {
    const std::lock_guard hold(TheBoxes().Lock);
    TheBoxes().Shown.clear();
}

void AnswerMessageBoxes(int button) {
    const std::lock_guard hold(TheBoxes().Lock);
    TheBoxes().Answer = button;
}

}  // namespace platform

int WINAPI MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT style) {
    const std::initializer_list<int> buttons = platform::ButtonsOf(style);
    if (buttons.size() == 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    platform::Boxes& boxes = platform::TheBoxes();
    const std::lock_guard hold(boxes.Lock);
    boxes.Shown.push_back({owner, text ? text : u"", caption ? caption : u"Error", style});
    const int* const wanted = std::find(buttons.begin(), buttons.end(), boxes.Answer);
    return wanted != buttons.end() ? *wanted : *buttons.begin();
}
