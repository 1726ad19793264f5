#include "platform/window/dialog/property_page.h"

#include "platform/window/dialog/dialog.h"

namespace platform {

namespace {

constexpr int LongestTitle = 256;

std::u16string TextOf(HINSTANCE module, LPCWSTR text) {
    if (!IS_INTRESOURCE(text)) {
        return text;
    }
    WCHAR loaded[LongestTitle];
    LoadStringW(module, LOWORD(reinterpret_cast<ULONG_PTR>(text)), loaded, LongestTitle);
    return loaded;
}

}  // namespace

PropertyPage::PropertyPage(const PROPSHEETPAGEW& description)
    : UserObject(OwnKind),
      description_(description),
      title_(TextOf(description.hInstance, description.pszTitle)) {
    description_.pszTitle = title_.c_str();
}

RECT PropertyPage::Area() const {
    const std::optional<DialogTemplate> dialog =
        LoadDialogTemplate(description_.hInstance, description_.pszTemplate);
    return dialog ? DialogUnitsToPixels(dialog->Place) : RECT{};
}

HWND PropertyPage::Create(HWND sheet) {
    std::optional<DialogTemplate> dialog =
        LoadDialogTemplate(description_.hInstance, description_.pszTemplate);
    const bool calls = (description_.dwFlags & PSP_USECALLBACK) != 0;
    if (!dialog || (calls && description_.pfnCallback(nullptr, PSPCB_CREATE, &description_) == 0)) {
        return nullptr;
    }
    dialog->Style &= ~DWORD{WS_VISIBLE};
    return CreateDialogFrom(*dialog, sheet, description_.pfnDlgProc, reinterpret_cast<LPARAM>(&description_));
}

}  // namespace platform

using namespace platform;

HPROPSHEETPAGE WINAPI CreatePropertySheetPageW(LPCPROPSHEETPAGEW description) {
    return static_cast<HPROPSHEETPAGE>(OpenUserHandle(std::make_shared<PropertyPage>(*description)));
}

BOOL WINAPI DestroyPropertySheetPage(HPROPSHEETPAGE handle) {
    return CloseUserHandle(handle, UserObjectKind::PropertyPage) ? TRUE : FALSE;
}
