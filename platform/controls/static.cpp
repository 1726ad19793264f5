// The static control: a label, or a picture that it loads from the resources of its creator.
#include "platform/controls/control.h"
#include "platform/controls/control_classes.h"

namespace platform {

namespace {

// A picture's resource number comes in place of the text: as a pointer's value, or after this mark.
constexpr WCHAR NumberMark = 0xFFFF;

LPCWSTR ResourceName(LPCWSTR text) {
    if (IS_INTRESOURCE(text) || text[0] != NumberMark) {
        return text;
    }
    return MAKEINTRESOURCEW(text[1]);
}

class Static final : public Control {
public:
    using Control::Control;
    LRESULT Handle(UINT message, WPARAM first, LPARAM second) override;

private:
    bool IsBitmap() const { return (Style() & SS_TYPEMASK) == SS_BITMAP; }

    void LoadPicture(const CREATESTRUCTW& creation);
    HBITMAP SetPicture(HBITMAP picture);
    void TakePictureSize();
    void DropOwnPicture();

    HBITMAP picture_ = nullptr;
    HBITMAP ownPicture_ = nullptr;  // the one that this control has loaded itself
};

void Static::LoadPicture(const CREATESTRUCTW& creation) {
    const LPCWSTR name = ResourceName(creation.lpszName);
    if (IsBitmap() && name) {
        ownPicture_ = LoadBitmapW(creation.hInstance, name);
        SetPicture(ownPicture_);
    }
}

HBITMAP Static::SetPicture(HBITMAP picture) {
    const HBITMAP before = picture_;
    picture_ = picture;
    if ((Style() & SS_CENTERIMAGE) == 0) {
        TakePictureSize();
    }
    return before;
}

void Static::TakePictureSize() {
    BITMAP bitmap{};
    if (!picture_ || GetObjectW(picture_, sizeof(bitmap), &bitmap) == 0) {
        return;
    }
    RECT window{};
    GetWindowRect(Window(), &window);
    const RECT client = ClientArea();
    const int frameWidth = window.right - window.left - client.right;
    const int frameHeight = window.bottom - window.top - client.bottom;
    SetWindowPos(Window(), nullptr, 0, 0, bitmap.bmWidth + frameWidth, bitmap.bmHeight + frameHeight,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void Static::DropOwnPicture() {
    if (ownPicture_) {
        DeleteObject(ownPicture_);
        ownPicture_ = nullptr;
    }
}

LRESULT Static::Handle(UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_CREATE:
        LoadPicture(*reinterpret_cast<const CREATESTRUCTW*>(second));
        return 0;
    case WM_DESTROY:
        DropOwnPicture();
        return 0;
    case WM_GETDLGCODE:
        return DLGC_STATIC;
    case WM_NCHITTEST:
        return HTTRANSPARENT;
    case STM_SETIMAGE:
        if (!IsBitmap() || first != IMAGE_BITMAP) {
            return 0;
        }
        return reinterpret_cast<LRESULT>(SetPicture(reinterpret_cast<HBITMAP>(second)));
    case STM_GETIMAGE:
        return first == IMAGE_BITMAP ? reinterpret_cast<LRESULT>(picture_) : 0;
    default:
        return Default(message, first, second);
    }
}

}  // namespace

WNDPROC StaticProcedure() {
    return ControlProcedure<Static>;
}

}  // namespace platform
