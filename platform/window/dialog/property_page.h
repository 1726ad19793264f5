// A page of a property sheet, from CreatePropertySheetPage until its sheet is closed. Its handle is a user
// object's.
#pragma once

#include <windows.h>
#include <prsht.h>

#include <string>

#include "platform/window/user_object.h"

namespace platform {

class PropertyPage : public UserObject {
public:
    static constexpr UserObjectKind OwnKind = UserObjectKind::PropertyPage;

    // Copies the description and its title.
    explicit PropertyPage(const PROPSHEETPAGEW& description);

    const std::u16string& Title() const { return title_; }

    // In pixels, from {0, 0}.
    RECT Area() const;

    // Makes the page's dialog inside the sheet. Null when the page's callback refuses it.
    HWND Create(HWND sheet);

private:
    PROPSHEETPAGEW description_;  // what the dialog and the callback get to see
    std::u16string title_;
};

}  // namespace platform
