// Styles of windows and controls by the names of the Windows headers, for the dialogs of kestvox.rc.
// Read by the resource compilers only: they are given no other header than the library's own.
#pragma once

#define WS_CHILD 0x40000000L
#define WS_BORDER 0x00800000L
#define WS_VSCROLL 0x00200000L
#define WS_GROUP 0x00020000L
#define WS_TABSTOP 0x00010000L
#define DS_SETFONT 0x40L
#define BS_AUTOCHECKBOX 0x3L
#define BS_GROUPBOX 0x7L
#define BS_AUTORADIOBUTTON 0x9L
#define BS_CENTER 0x300L
#define BS_MULTILINE 0x2000L
#define ES_RIGHT 0x2L
#define ES_AUTOHSCROLL 0x80L
#define ES_READONLY 0x800L
#define CBS_DROPDOWNLIST 0x3L
#define SS_CENTER 0x1L
#define SS_BITMAP 0xEL
#define SS_SUNKEN 0x1000L
#define TBS_TOP 0x4L
#define TVS_HASLINES 0x2L

// The kinds of controls that the pages are made of; all are visible children.
// A group box closes the group of the buttons before it: the arrow keys do not lead out of that.
#define GROUP_BOX(text, x, y, width, height) \
    CONTROL text, -1, "Button", BS_GROUPBOX | BS_CENTER | WS_GROUP, x, y, width, height
#define CHECK_BOX(text, id, more, x, y, width, height) \
    CONTROL text, id, "Button", BS_AUTOCHECKBOX | WS_GROUP | WS_TABSTOP more, x, y, width, height
#define FIRST_RADIO_BUTTON(text, id, x, y, width, height) \
    CONTROL text, id, "Button", BS_AUTORADIOBUTTON | WS_GROUP | WS_TABSTOP, x, y, width, height
#define NEXT_RADIO_BUTTON(text, id, x, y, width, height) \
    CONTROL text, id, "Button", BS_AUTORADIOBUTTON, x, y, width, height
#define LABEL(text, x, y, width, height) CONTROL text, -1, "Static", WS_GROUP, x, y, width, height
#define CENTERED_LABEL(text, x, y, width, height) \
    CONTROL text, -1, "Static", SS_CENTER | WS_GROUP, x, y, width, height
#define SLIDER(id, x, y, width, height) \
    CONTROL "Slider1", id, "msctls_trackbar32", TBS_TOP | WS_TABSTOP, x, y, width, height
// Its number ends at the right edge; Windows NT 4.0 begins a single line at the left. An edit of several
// lines would keep Enter and Escape from the sheet.
#define SLIDER_VALUE(id, x, y, width, height) \
    CONTROL "", id, "Edit", ES_READONLY | ES_RIGHT | WS_BORDER, x, y, width, height
#define FIELD(id, x, y, width, height) CONTROL "", id, "Edit", ES_READONLY | WS_TABSTOP, x, y, width, height
