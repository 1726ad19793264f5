// Reads a compiled dialog template. Plain and extended templates (DIALOG and DIALOGEX) give the same
// structure.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

namespace platform {

// A class or text: a number, or a text.
struct TemplateName {
    WORD Number = 0;
    std::u16string Text;

    bool IsNumber() const { return Number != 0; }
};

struct TemplateControl {
    DWORD Style;
    DWORD ExStyle;
    RECT Place;  // in dialog units; right and bottom are width and height
    DWORD Id;
    TemplateName Class;  // numbers from 0x80 are button, edit, static, list box, scroll bar, combo box
    TemplateName Text;   // a number is a picture's
    std::vector<BYTE> Data;

    std::u16string ClassName() const;
};

struct DialogTemplate {
    DWORD Style;
    DWORD ExStyle;
    RECT Place;
    TemplateName Menu;
    TemplateName Class;
    std::u16string Title;
    WORD FontHeight = 0;  // in points; 0: the system's font
    std::u16string FontFace;
    std::vector<TemplateControl> Controls;
};

// `size` is the number of bytes at `data`, or SIZE_MAX when it is not known. Empty when the template ends
// too early.
std::optional<DialogTemplate> ReadDialogTemplate(const void* data, size_t size);

}  // namespace platform
