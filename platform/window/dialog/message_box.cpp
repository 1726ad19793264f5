// Message boxes without a screen: each call is recorded and answered at once.
#include <windows.h>

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

// The box is answered with a button that it has.
int WINAPI MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT style) {
    platform::Boxes& boxes = platform::TheBoxes();
    const std::lock_guard hold(boxes.Lock);
    boxes.Shown.push_back({owner, text, caption ? caption : u"Error", style});
    if ((style & MB_YESNO) == 0) {
        return IDOK;
    }
    return boxes.Answer == IDNO ? IDNO : IDYES;
}
