// A page of a property sheet, from CreatePropertySheetPage to its release. Its handle is a user object's.
#pragma once

#include <windows.h>
#include <prsht.h>

#include <optional>
#include <string>

#include "platform/window/dialog/dialog_template.h"
#include "platform/window/user_object.h"

namespace platform {

class PropertyPage : public UserObject {
public:
    static constexpr UserObjectKind OwnKind = UserObjectKind::PropertyPage;

    // Copies the description and the texts that it points to.
    explicit PropertyPage(const PROPSHEETPAGEW& description);

    const std::u16string& Title() const { return title_; }
    bool HasHelp() const { return (description_.dwFlags & PSP_HASHELP) != 0; }

    // The number of the dialog in the resources; 0 when it has a name or lies in memory.
    WORD DialogNumber() const;

    // The template with the styles of a page: a child window without a frame.
    std::optional<DialogTemplate> Template() const;

    // Makes the page's dialog inside the sheet. Null when the page's callback refuses it.
    HWND Create(HWND sheet);

    // Tells the page's callback that the page is released.
    void Release();

private:
    UINT Call(UINT message);

    PROPSHEETPAGEW description_;  // what the dialog and the callback get to see
    std::u16string templateName_;
    std::u16string title_;
};

}  // namespace platform
