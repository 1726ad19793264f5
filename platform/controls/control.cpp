#include "platform/controls/control.h"

#include <algorithm>

namespace platform {

DWORD Control::Style() const {
    return static_cast<DWORD>(GetWindowLongPtrW(window_, GWL_STYLE));
}

LRESULT Control::Default(UINT message, WPARAM first, LPARAM second) {
    return DefWindowProcW(window_, message, first, second);
}

void Control::Command(WORD notification) const {
    const auto identifier = static_cast<WORD>(GetDlgCtrlID(window_));
    SendMessageW(GetParent(window_), WM_COMMAND, MAKEWPARAM(identifier, notification),
                 reinterpret_cast<LPARAM>(window_));
}

LRESULT Control::Notify(UINT code) const {
    NMHDR header{};
    return Notify(code, header);
}

LRESULT Control::Notify(UINT code, NMHDR& header) const {
    header = {window_, static_cast<UINT_PTR>(GetDlgCtrlID(window_)), code};
    return SendMessageW(GetParent(window_), WM_NOTIFY, header.idFrom, reinterpret_cast<LPARAM>(&header));
}

POINT PointOf(LPARAM place) {
    return {static_cast<SHORT>(LOWORD(place)), static_cast<SHORT>(HIWORD(place))};
}

LRESULT CopyText(std::u16string_view text, LPWSTR target, size_t size) {
    const size_t copied = text.substr(0, size - 1).copy(target, size - 1);
    target[copied] = 0;
    return static_cast<LRESULT>(copied);
}

}  // namespace platform
