// The trackbar. The parent gets WM_HSCROLL for what the user does, not for what a program sets.
#include <algorithm>
#include <vector>

#include "platform/controls/control.h"
#include "platform/controls/control_classes.h"

namespace platform {

namespace {

constexpr int PagesInRange = 5;
constexpr int ThumbWidth = 11;
constexpr int ThumbHeight = 21;
constexpr int ChannelInset = 8;  // from the control's ends

class Trackbar final : public Control {
public:
    using Control::Control;
    LRESULT Handle(UINT message, WPARAM first, LPARAM second) override;

private:
    int PageSize() const { return std::max((maximum_ - minimum_) / PagesInRange, 1); }
    int WayOfThumb() const;
    int ThumbCentre() const;
    RECT Thumb() const;
    int PositionAt(int x) const;

    void SetRange(int minimum, int maximum);
    void SetPosition(LPARAM position);
    void Scroll(WORD code) const;
    void Move(WORD code, int position);
    void Key(WPARAM key);
    void Press(POINT point);
    void Release();

    int minimum_ = 0;
    int maximum_ = 100;
    int position_ = 0;
    std::vector<int> ticks_;
    bool dragging_ = false;  // the mouse has the thumb
    int grip_ = 0;           // from the thumb's centre to where it was taken
};

void Trackbar::SetRange(int minimum, int maximum) {
    minimum_ = minimum;
    maximum_ = maximum;
    SetPosition(position_);
}

void Trackbar::SetPosition(LPARAM position) {
    position_ = static_cast<int>(std::clamp<LPARAM>(position, minimum_, maximum_));
}

int Trackbar::WayOfThumb() const {
    RECT client{};
    GetClientRect(Window(), &client);
    return client.right - 2 * ChannelInset - ThumbWidth;
}

int Trackbar::ThumbCentre() const {
    return ChannelInset + ThumbWidth / 2 + WayOfThumb() * (position_ - minimum_) / (maximum_ - minimum_);
}

RECT Trackbar::Thumb() const {
    const int left = ThumbCentre() - ThumbWidth / 2;
    return {left, 0, left + ThumbWidth, ThumbHeight};
}

int Trackbar::PositionAt(int x) const {
    const int way = WayOfThumb();
    const int fromStart = std::clamp(x - ChannelInset - ThumbWidth / 2, 0, way);
    return minimum_ + (fromStart * (maximum_ - minimum_) + way / 2) / way;
}

void Trackbar::Scroll(WORD code) const {
    const bool tellsPosition = code == TB_THUMBTRACK || code == TB_THUMBPOSITION;
    SendMessageW(GetParent(Window()), WM_HSCROLL, MAKEWPARAM(code, tellsPosition ? position_ : 0),
                 reinterpret_cast<LPARAM>(Window()));
}

void Trackbar::Move(WORD code, int position) {
    const int before = position_;
    SetPosition(position);
    if (position_ != before) {
        Scroll(code);
    }
}

void Trackbar::Key(WPARAM key) {
    switch (key) {
    case VK_LEFT:
    case VK_UP:
        Move(TB_LINEUP, position_ - 1);
        break;
    case VK_RIGHT:
    case VK_DOWN:
        Move(TB_LINEDOWN, position_ + 1);
        break;
    case VK_PRIOR:
        Move(TB_PAGEUP, position_ - PageSize());
        break;
    case VK_NEXT:
        Move(TB_PAGEDOWN, position_ + PageSize());
        break;
    case VK_HOME:
        Move(TB_TOP, minimum_);
        break;
    case VK_END:
        Move(TB_BOTTOM, maximum_);
        break;
    default:
        break;
    }
}

void Trackbar::Press(POINT point) {
    SetFocus(Window());
    const RECT thumb = Thumb();
    if (PtInRect(&thumb, point)) {
        SetCapture(Window());
        dragging_ = true;
        grip_ = point.x - ThumbCentre();
    }
}

void Trackbar::Release() {
    if (dragging_) {
        dragging_ = false;
        Scroll(TB_THUMBPOSITION);
        Scroll(TB_ENDTRACK);
        ReleaseCapture();
    }
}

LRESULT Trackbar::Handle(UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_GETDLGCODE:
        return DLGC_WANTARROWS;
    case WM_KEYDOWN:
        Key(first);
        return 0;
    case WM_LBUTTONDOWN:
        Press(PointOf(second));
        return 0;
    case WM_MOUSEMOVE:
        if (dragging_) {
            Move(TB_THUMBTRACK, PositionAt(PointOf(second).x - grip_));
        }
        return 0;
    case WM_LBUTTONUP:
        Release();
        return 0;
    case WM_CAPTURECHANGED:
        dragging_ = false;
        return 0;
    case TBM_GETPOS:
        return position_;
    case TBM_SETPOS:
        SetPosition(second);
        return 0;
    case TBM_SETRANGE:
        SetRange(static_cast<SHORT>(LOWORD(second)), static_cast<SHORT>(HIWORD(second)));
        return 0;
    case TBM_GETRANGEMIN:
        return minimum_;
    case TBM_GETRANGEMAX:
        return maximum_;
    case TBM_SETTIC:
        ticks_.push_back(static_cast<int>(second));
        return TRUE;
    case TBM_GETTIC:
        return first < ticks_.size() ? ticks_[first] : -1;
    case TBM_GETTHUMBRECT:
        *reinterpret_cast<RECT*>(second) = Thumb();
        return 0;
    default:
        return Default(message, first, second);
    }
}

}  // namespace

WNDPROC TrackbarProcedure() {
    return ControlProcedure<Trackbar>;
}

}  // namespace platform
