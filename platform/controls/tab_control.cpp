// The tab control. It only keeps the tabs and which one is selected; its owner shows what belongs to it.
#include <numeric>
#include <utility>
#include <vector>

#include "platform/controls/control.h"
#include "platform/controls/control_classes.h"

namespace platform {

namespace {

// Of a tab, of the room around its text, and of the frame around what the owner shows.
constexpr int TabHeight = 18;
constexpr int TextInset = 6;
constexpr int Frame = 4;

class TabControl final : public Control {
public:
    using Control::Control;
    LRESULT Handle(UINT message, WPARAM first, LPARAM second) override;

private:
    int Count() const { return static_cast<int>(tabs_.size()); }

    LRESULT Get(WPARAM index, TCITEMW& item) const;
    void SelectByUser(int index);
    int RowCount(int width) const;
    void FrameAround(RECT& area) const;

    std::vector<std::u16string> tabs_;
    int current_ = 0;
};

LRESULT TabControl::Get(WPARAM index, TCITEMW& item) const {
    if (index >= tabs_.size()) {
        return FALSE;
    }
    CopyText(tabs_[index], item.pszText, static_cast<size_t>(item.cchTextMax));
    return TRUE;
}

// Unlike a selection that the program makes, this is asked and told of.
void TabControl::SelectByUser(int index) {
    if (index >= 0 && index < Count() && Notify(TCN_SELCHANGING) == FALSE) {
        current_ = index;
        Notify(TCN_SELCHANGE);
    }
}

int TabControl::RowCount(int width) const {
    const int length =
        std::accumulate(tabs_.begin(), tabs_.end(), 0, [](int before, const std::u16string& tab) {
            return before + static_cast<int>(tab.size()) * CharacterWidth + 2 * TextInset;
        });
    return (Style() & TCS_MULTILINE) != 0 ? length / width + 1 : 1;
}

void TabControl::FrameAround(RECT& area) const {
    area = {area.left - Frame, area.top - Frame - TabHeight * RowCount(area.right - area.left),
            area.right + Frame, area.bottom + Frame};
}

LRESULT TabControl::Handle(UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_GETDLGCODE:
        return DLGC_WANTARROWS;
    case WM_KEYDOWN:
        if (first == VK_LEFT || first == VK_RIGHT) {
            SelectByUser(first == VK_LEFT ? current_ - 1 : current_ + 1);
        }
        return 0;
    case TCM_GETITEMCOUNT:
        return Count();
    case TCM_INSERTITEMW:
        tabs_.emplace_back(reinterpret_cast<const TCITEMW*>(second)->pszText);
        return Count() - 1;
    case TCM_GETITEMW:
        return Get(first, *reinterpret_cast<TCITEMW*>(second));
    case TCM_GETCURSEL:
        return current_;
    case TCM_SETCURSEL:
        return std::exchange(current_, static_cast<int>(first));
    case TCM_ADJUSTRECT:
        FrameAround(*reinterpret_cast<RECT*>(second));
        return 0;
    default:
        return Default(message, first, second);
    }
}

}  // namespace

WNDPROC TabControlProcedure() {
    return ControlProcedure<TabControl>;
}

}  // namespace platform
