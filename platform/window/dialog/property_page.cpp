#include "platform/window/dialog/property_page.h"

#include <algorithm>

#include "platform/loader/resources.h"
#include "platform/window/dialog/dialog.h"

namespace platform {

namespace {

constexpr DWORD DroppedStyles =
    DS_MODALFRAME | WS_CAPTION | WS_SYSMENU | WS_POPUP | WS_DISABLED | WS_VISIBLE | WS_THICKFRAME;
constexpr DWORD PageStyles = DS_NOFAILCREATE | DS_CONTROL | WS_CHILD | WS_TABSTOP;
constexpr int LongestTitle = 256;

std::u16string TextOf(HINSTANCE module, LPCWSTR text) {
    if (!IS_INTRESOURCE(text)) {
        return text;
    }
    WCHAR loaded[LongestTitle];
    LoadStringW(module, ResourceNumber(text), loaded, LongestTitle);
    return loaded;
}

}  // namespace

PropertyPage::PropertyPage(const PROPSHEETPAGEW& description)
    : UserObject(OwnKind), description_(description) {
    const bool inMemory = (description.dwFlags & PSP_DLGINDIRECT) != 0;
    if (!inMemory && !IS_INTRESOURCE(description.pszTemplate)) {
        templateName_ = description.pszTemplate;
        description_.pszTemplate = templateName_.c_str();
    }
    if ((description.dwFlags & PSP_USETITLE) != 0) {
        title_ = TextOf(description.hInstance, description.pszTitle);
        description_.pszTitle = title_.c_str();
    } else if (const std::optional<DialogTemplate> dialog = Template()) {
        title_ = dialog->Title;
    }
}

WORD PropertyPage::DialogNumber() const {
    const bool numbered =
        (description_.dwFlags & PSP_DLGINDIRECT) == 0 && IS_INTRESOURCE(description_.pszTemplate);
    return numbered ? ResourceNumber(description_.pszTemplate) : WORD{0};
}

std::optional<DialogTemplate> PropertyPage::Template() const {
    std::optional<DialogTemplate> dialog =
        (description_.dwFlags & PSP_DLGINDIRECT) != 0
            ? ReadDialogTemplate(description_.pResource, SIZE_MAX)
            : LoadDialogTemplate(description_.hInstance, description_.pszTemplate);
    if (dialog) {
        dialog->Style = (dialog->Style & ~DroppedStyles) | PageStyles;
    }
    return dialog;
}

HWND PropertyPage::Create(HWND sheet) {
    const std::optional<DialogTemplate> dialog = Template();
    if (!dialog || Call(PSPCB_CREATE) == 0) {
        return nullptr;
    }
    return CreateDialogFrom(description_.hInstance, *dialog, sheet, description_.pfnDlgProc,
                            reinterpret_cast<LPARAM>(&description_));
}

void PropertyPage::Release() {
    Call(PSPCB_RELEASE);
}

// The answer of the page's callback; 1, which allows everything, when it has none.
UINT PropertyPage::Call(UINT message) {
    const bool calls = (description_.dwFlags & PSP_USECALLBACK) != 0 && description_.pfnCallback;
    return calls ? description_.pfnCallback(nullptr, message, &description_) : 1;
}

}  // namespace platform

using namespace platform;

HPROPSHEETPAGE WINAPI CreatePropertySheetPageW(LPCPROPSHEETPAGEW description) {
    if (!description || description->dwSize != sizeof *description) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return static_cast<HPROPSHEETPAGE>(OpenUserHandle(std::make_shared<PropertyPage>(*description)));
}

BOOL WINAPI DestroyPropertySheetPage(HPROPSHEETPAGE handle) {
    const auto page = FindUserObject<PropertyPage>(handle);
    if (!page) {
        return FALSE;
    }
    page->Release();
    return CloseUserHandle(handle, UserObjectKind::PropertyPage) ? TRUE : FALSE;
}
