// Texts that a page shows beside its controls.
#pragma once

#include <windows.h>

namespace kestvox {

enum class LabelSide { Left, Centre, Right };

// A text of the string table at a place of the page, in dialog units, in the page's letters. Nothing hangs on
// it: when it cannot be made, it is missing.
void AddLabel(HWND page, UINT text, RECT place, LabelSide side);

// What the two ends of a slider mean, in the frame of the group box above it, whose top is at `y`. All
// sliders of the sheet begin and end at the same places.
void LabelSliderEnds(HWND page, UINT lowest, UINT highest, int y);

}  // namespace kestvox
