#include "config_ui/page_label.h"

#include "config_ui/property_page.h"

namespace kestvox {

namespace {

constexpr DWORD Alignments[] = {SS_LEFT, SS_CENTER, SS_RIGHT};  // by LabelSide

constexpr int SliderLeft = 41;
constexpr int SliderRight = 180;
constexpr int EndWidth = 30;
constexpr int LineHeight = 8;

}  // namespace

void AddLabel(HWND page, UINT text, RECT place, LabelSide side) {
    WCHAR label[128];
    LoadText(text, label);
    MapDialogRect(page, &place);
    const DWORD style = WS_CHILD | WS_VISIBLE | WS_GROUP | Alignments[static_cast<int>(side)];
    const HWND window = CreateWindowExW(WS_EX_NOPARENTNOTIFY, TEXT("Static"), label, style, place.left,
                                        place.top, place.right - place.left, place.bottom - place.top, page,
                                        nullptr, ModuleHandle, nullptr);
    if (window != nullptr) {
        SendMessageW(window, WM_SETFONT, static_cast<WPARAM>(SendMessageW(page, WM_GETFONT, 0, 0)), FALSE);
    }
}

void LabelSliderEnds(HWND page, UINT lowest, UINT highest, int y) {
    AddLabel(page, lowest, {SliderLeft, y, SliderLeft + EndWidth, y + LineHeight}, LabelSide::Left);
    AddLabel(page, highest, {SliderRight - EndWidth, y, SliderRight, y + LineHeight}, LabelSide::Right);
}

}  // namespace kestvox
