// The trackbar. The parent gets WM_HSCROLL or WM_VSCROLL for what the user does, not for what a program sets.
#include <algorithm>
#include <utility>
#include <vector>

#include "platform/controls/control.h"
#include "platform/controls/control_classes.h"

namespace platform {

namespace {

constexpr int InitialMaximum = 100;
constexpr int PagesInRange = 5;
constexpr int ThumbWidth = 11;
constexpr int ThumbHeight = 21;
constexpr int ChannelInset = 8;  // from the control's ends
constexpr int ChannelTop = 8;
constexpr int ChannelHeight = 4;

class Trackbar final : public Control {
public:
    using Control::Control;
    LRESULT Handle(UINT message, WPARAM first, LPARAM second) override;

private:
    bool IsVertical() const { return (Style() & TBS_VERT) != 0; }
    int PageSize() const;

    void SetRange(int minimum, int maximum);
    void SetPosition(LPARAM position);
    BOOL AddTick(int position);
    LRESULT TellTick(WPARAM index) const;

    RECT AlongControl(int from, int top, int to, int bottom) const;
    RECT Channel() const;
    RECT Thumb() const;
    int ThumbCentre() const;
    int PositionAt(int place) const;
    int AlongPoint(POINT point) const { return IsVertical() ? point.y : point.x; }

    void Scroll(WORD code) const;
    void Move(WORD code, int position);
    void Key(WPARAM key);
    void Press(POINT point);
    void Drag(POINT point);
    void Release();

    int minimum_ = 0;
    int maximum_ = InitialMaximum;
    int position_ = 0;
    int lineSize_ = 1;
    int pageSize_ = 0;  // as set by the program; 0: a fifth of the range
    std::vector<int> ticks_;
    bool pressed_ = false;   // the mouse is down in the control
    bool dragging_ = false;  // and has the thumb
    int grip_ = 0;           // from the thumb's centre to where it was taken
};

int Trackbar::PageSize() const {
    return pageSize_ != 0 ? pageSize_ : std::max((maximum_ - minimum_) / PagesInRange, 1);
}

void Trackbar::SetRange(int minimum, int maximum) {
    minimum_ = minimum;
    maximum_ = std::max(minimum, maximum);
    SetPosition(position_);
}

void Trackbar::SetPosition(LPARAM position) {
    position_ = static_cast<int>(std::clamp<LPARAM>(position, minimum_, maximum_));
}

BOOL Trackbar::AddTick(int position) {
    if (position < minimum_ || position > maximum_) {
        return FALSE;
    }
    ticks_.push_back(position);
    return TRUE;
}

LRESULT Trackbar::TellTick(WPARAM index) const {
    return index < ticks_.size() ? ticks_[index] : -1;
}

// All geometry is computed for a horizontal trackbar. For a vertical one the axes are exchanged.
RECT Trackbar::AlongControl(int from, int top, int to, int bottom) const {
    return IsVertical() ? RECT{top, from, bottom, to} : RECT{from, top, to, bottom};
}

RECT Trackbar::Channel() const {
    const RECT client = ClientArea();
    const int length = IsVertical() ? client.bottom : client.right;
    return AlongControl(ChannelInset, ChannelTop, length - ChannelInset, ChannelTop + ChannelHeight);
}

int Trackbar::ThumbCentre() const {
    const RECT client = ClientArea();
    const int length = (IsVertical() ? client.bottom : client.right) - 2 * ChannelInset - ThumbWidth;
    const int range = std::max(maximum_ - minimum_, 1);
    return ChannelInset + ThumbWidth / 2 + length * (position_ - minimum_) / range;
}

RECT Trackbar::Thumb() const {
    const int from = ThumbCentre() - ThumbWidth / 2;
    return AlongControl(from, 0, from + ThumbWidth, ThumbHeight);
}

int Trackbar::PositionAt(int place) const {
    const RECT client = ClientArea();
    const int length = (IsVertical() ? client.bottom : client.right) - 2 * ChannelInset - ThumbWidth;
    const int fromStart = std::clamp(place - ChannelInset - ThumbWidth / 2, 0, std::max(length, 0));
    return minimum_ + (length > 0 ? (fromStart * (maximum_ - minimum_) + length / 2) / length : 0);
}

void Trackbar::Scroll(WORD code) const {
    const bool tellsPosition = code == TB_THUMBTRACK || code == TB_THUMBPOSITION;
    SendMessageW(GetParent(Window()), IsVertical() ? WM_VSCROLL : WM_HSCROLL,
                 MAKEWPARAM(code, tellsPosition ? position_ : 0), reinterpret_cast<LPARAM>(Window()));
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
        Move(TB_LINEUP, position_ - lineSize_);
        break;
    case VK_RIGHT:
    case VK_DOWN:
        Move(TB_LINEDOWN, position_ + lineSize_);
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
    SetCapture(Window());
    pressed_ = true;
    const RECT thumb = Thumb();
    dragging_ = PtInRect(&thumb, point) != FALSE;
    if (dragging_) {
        grip_ = AlongPoint(point) - ThumbCentre();
    } else if (AlongPoint(point) < ThumbCentre()) {
        Move(TB_PAGEUP, position_ - PageSize());
    } else {
        Move(TB_PAGEDOWN, position_ + PageSize());
    }
}

void Trackbar::Drag(POINT point) {
    if (dragging_) {
        Move(TB_THUMBTRACK, PositionAt(AlongPoint(point) - grip_));
    }
}

void Trackbar::Release() {
    if (!pressed_) {
        return;
    }
    if (dragging_) {
        Scroll(TB_THUMBPOSITION);
    }
    pressed_ = dragging_ = false;
    Scroll(TB_ENDTRACK);
    ReleaseCapture();
    Notify(NM_RELEASEDCAPTURE);
}

LRESULT Trackbar::Handle(UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_GETDLGCODE:
        return DLGC_WANTARROWS;
    case WM_KEYDOWN:
        Key(first);
        return 0;
    case WM_KEYUP:
        Scroll(TB_ENDTRACK);
        return 0;
    case WM_LBUTTONDOWN:
        Press(PointOf(second));
        return 0;
    case WM_MOUSEMOVE:
        Drag(PointOf(second));
        return 0;
    case WM_LBUTTONUP:
        Release();
        return 0;
    case WM_CAPTURECHANGED:
        pressed_ = dragging_ = false;
        return 0;
    case TBM_GETPOS:
        return position_;
    case TBM_SETPOS:
        SetPosition(second);
        return 0;
    case TBM_SETRANGE:
        SetRange(static_cast<SHORT>(LOWORD(second)), static_cast<SHORT>(HIWORD(second)));
        return 0;
    case TBM_SETRANGEMIN:
        SetRange(static_cast<int>(second), std::max(static_cast<int>(second), maximum_));
        return 0;
    case TBM_SETRANGEMAX:
        SetRange(std::min(minimum_, static_cast<int>(second)), static_cast<int>(second));
        return 0;
    case TBM_GETRANGEMIN:
        return minimum_;
    case TBM_GETRANGEMAX:
        return maximum_;
    case TBM_SETTIC:
        return AddTick(static_cast<int>(second));
    case TBM_GETTIC:
        return TellTick(first);
    case TBM_GETNUMTICS:
        return static_cast<LRESULT>(ticks_.size()) + 2;  // and one at each end
    case TBM_CLEARTICS:
        ticks_.clear();
        return 0;
    case TBM_SETLINESIZE:
        return std::exchange(lineSize_, static_cast<int>(second));
    case TBM_GETLINESIZE:
        return lineSize_;
    case TBM_SETPAGESIZE: {
        const int before = PageSize();
        pageSize_ = static_cast<int>(second);
        return before;
    }
    case TBM_GETPAGESIZE:
        return PageSize();
    case TBM_GETTHUMBRECT:
        *reinterpret_cast<RECT*>(second) = Thumb();
        return 0;
    case TBM_GETCHANNELRECT:
        *reinterpret_cast<RECT*>(second) = Channel();
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
