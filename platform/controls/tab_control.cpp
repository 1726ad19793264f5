// The tab control. It only keeps the tabs and which one is selected; its owner shows what belongs to it.
#include <algorithm>
#include <utility>
#include <vector>

#include "platform/controls/control.h"
#include "platform/controls/control_classes.h"

namespace platform {

namespace {

constexpr int FrameWidth = 2;  // left and above the tabs
constexpr int TabHeight = 18;
constexpr int TabPadding = 6;     // left and right of the text
constexpr int DisplayInset = 4;   // from the tabs and the other edges to what the owner shows
constexpr int ScrollArrows = 32;  // room at the right of a row that does not fit
constexpr int NoTab = -1;

struct Tab {
    std::u16string Text;
    LPARAM Data = 0;
};

class TabControl final : public Control {
public:
    using Control::Control;
    LRESULT Handle(UINT message, WPARAM first, LPARAM second) override;

private:
    int Count() const { return static_cast<int>(tabs_.size()); }
    bool Has(WPARAM index) const { return index < tabs_.size(); }

    LRESULT Insert(WPARAM index, const TCITEMW& item);
    bool Get(WPARAM index, TCITEMW& item) const;
    bool Set(WPARAM index, const TCITEMW& item);
    int SelectByProgram(WPARAM index);
    void SelectByUser(int index);
    void Key(WPARAM key);
    void Click(POINT point);

    std::vector<RECT> Layout() const;
    std::vector<RECT> LayOutRows() const;
    std::vector<RECT> LayOutInOneRow() const;
    int RowCount() const;
    int TabAt(POINT point) const;
    void AdjustRect(bool toWindow, RECT& area) const;

    std::vector<Tab> tabs_;
    int current_ = NoTab;
};

int TabWidth(const Tab& tab) {
    return static_cast<int>(tab.Text.size()) * CharacterWidth + 2 * TabPadding;
}

RECT Moved(RECT area, int x, int y) {
    return {area.left + x, area.top + y, area.right + x, area.bottom + y};
}

void Fill(Tab& tab, const TCITEMW& item) {
    if ((item.mask & TCIF_TEXT) != 0 && item.pszText) {
        tab.Text = item.pszText;
    }
    if ((item.mask & TCIF_PARAM) != 0) {
        tab.Data = item.lParam;
    }
}

LRESULT TabControl::Insert(WPARAM index, const TCITEMW& item) {
    const int place = std::min(static_cast<int>(index), Count());
    Tab tab;
    Fill(tab, item);
    tabs_.insert(tabs_.begin() + place, std::move(tab));
    if (current_ == NoTab) {
        current_ = place;
    } else if (current_ >= place) {
        ++current_;
    }
    return place;
}

bool TabControl::Get(WPARAM index, TCITEMW& item) const {
    if (!Has(index)) {
        return false;
    }
    const Tab& tab = tabs_[index];
    if ((item.mask & TCIF_TEXT) != 0) {
        CopyText(tab.Text, item.pszText, static_cast<size_t>(std::max(item.cchTextMax, 0)));
    }
    if ((item.mask & TCIF_PARAM) != 0) {
        item.lParam = tab.Data;
    }
    return true;
}

bool TabControl::Set(WPARAM index, const TCITEMW& item) {
    if (!Has(index)) {
        return false;
    }
    Fill(tabs_[index], item);
    return true;
}

// A selection that the program makes is not notified to the owner.
int TabControl::SelectByProgram(WPARAM index) {
    return Has(index) ? std::exchange(current_, static_cast<int>(index)) : NoTab;
}

void TabControl::SelectByUser(int index) {
    if (index < 0 || index >= Count() || index == current_ || Notify(TCN_SELCHANGING) != FALSE) {
        return;
    }
    current_ = index;
    Notify(TCN_SELCHANGE);
}

void TabControl::Key(WPARAM key) {
    if (key == VK_LEFT) {
        SelectByUser(current_ - 1);
    } else if (key == VK_RIGHT) {
        SelectByUser(current_ + 1);
    }
}

void TabControl::Click(POINT point) {
    const int hit = TabAt(point);
    if (hit == current_) {
        SetFocus(Window());
    }
    SelectByUser(hit);
}

std::vector<RECT> TabControl::Layout() const {
    return (Style() & TCS_MULTILINE) != 0 ? LayOutRows() : LayOutInOneRow();
}

std::vector<RECT> TabControl::LayOutRows() const {
    const int room = ClientArea().right - FrameWidth;
    std::vector<RECT> places;
    RECT place{FrameWidth, FrameWidth, FrameWidth, FrameWidth + TabHeight};
    for (const Tab& tab : tabs_) {
        place.left = place.right;
        if (place.left > FrameWidth && place.left + TabWidth(tab) > room) {
            place.left = FrameWidth;
            place = Moved(place, 0, TabHeight);
        }
        place.right = place.left + TabWidth(tab);
        places.push_back(place);
    }
    return places;
}

// A row that does not fit is scrolled by whole tabs, as far as the current one needs to be seen.
std::vector<RECT> TabControl::LayOutInOneRow() const {
    std::vector<RECT> places;
    RECT place{FrameWidth, FrameWidth, FrameWidth, FrameWidth + TabHeight};
    for (const Tab& tab : tabs_) {
        place.left = place.right;
        place.right = place.left + TabWidth(tab);
        places.push_back(place);
    }
    const LONG width = ClientArea().right;
    if (current_ == NoTab || places.back().right <= width) {
        return places;
    }
    const RECT& current = places[static_cast<size_t>(current_)];
    LONG scrolled = 0;
    for (int first = 0; first < current_ && current.right - scrolled > width - ScrollArrows; ++first) {
        scrolled = places[static_cast<size_t>(first)].right - FrameWidth;
    }
    for (RECT& moved : places) {
        moved = Moved(moved, -static_cast<int>(scrolled), 0);
    }
    return places;
}

int TabControl::RowCount() const {
    const std::vector<RECT> places = Layout();
    return places.empty() ? 0 : (places.back().top - FrameWidth) / TabHeight + 1;
}

int TabControl::TabAt(POINT point) const {
    const std::vector<RECT> places = Layout();
    const auto hit = std::find_if(places.begin(), places.end(),
                                  [point](const RECT& place) { return PtInRect(&place, point) != FALSE; });
    return hit == places.end() ? NoTab : static_cast<int>(hit - places.begin());
}

void TabControl::AdjustRect(bool toWindow, RECT& area) const {
    const int above = FrameWidth + std::max(RowCount(), 1) * TabHeight + DisplayInset;
    const int outwards = toWindow ? -1 : 1;
    area.left += outwards * DisplayInset;
    area.top += outwards * above;
    area.right -= outwards * DisplayInset;
    area.bottom -= outwards * DisplayInset;
}

LRESULT TabControl::Handle(UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_GETDLGCODE:
        return DLGC_WANTARROWS | DLGC_WANTCHARS;
    case WM_LBUTTONDOWN:
        Click(PointOf(second));
        return 0;
    case WM_LBUTTONUP:
        Notify(NM_CLICK);
        return 0;
    case WM_KEYDOWN:
        Key(first);
        return 0;
    case TCM_GETITEMCOUNT:
        return Count();
    case TCM_INSERTITEMW:
        return Insert(first, *reinterpret_cast<const TCITEMW*>(second));
    case TCM_GETITEMW:
        return Get(first, *reinterpret_cast<TCITEMW*>(second));
    case TCM_SETITEMW:
        return Set(first, *reinterpret_cast<const TCITEMW*>(second));
    case TCM_DELETEALLITEMS:
        tabs_.clear();
        current_ = NoTab;
        return TRUE;
    case TCM_GETCURSEL:
        return current_;
    case TCM_SETCURSEL:
        return SelectByProgram(first);
    case TCM_GETITEMRECT:
        if (!Has(first)) {
            return FALSE;
        }
        *reinterpret_cast<RECT*>(second) = Layout()[first];
        return TRUE;
    case TCM_GETROWCOUNT:
        return RowCount();
    case TCM_HITTEST: {
        auto& hit = *reinterpret_cast<TCHITTESTINFO*>(second);
        const int tab = TabAt(hit.pt);
        hit.flags = tab == NoTab ? TCHT_NOWHERE : TCHT_ONITEMLABEL;
        return tab;
    }
    case TCM_ADJUSTRECT:
        AdjustRect(first != FALSE, *reinterpret_cast<RECT*>(second));
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
