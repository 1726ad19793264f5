// Reads a compiled dialog template of the plain kind (DIALOG).
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

namespace platform {

struct TemplateControl {
    DWORD Style;
    RECT Place;  // in dialog units; right and bottom are width and height
    DWORD Id;
    std::u16string ClassName;
    std::u16string Text;  // a picture's number lies behind a mark
};

struct DialogTemplate {
    DWORD Style;
    RECT Place;
    std::u16string Title;
    std::vector<TemplateControl> Controls;
};

// Empty when the template ends too early.
std::optional<DialogTemplate> ReadDialogTemplate(const BYTE* data, size_t size);

}  // namespace platform
