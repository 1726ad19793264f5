// gdi32: the objects that windows, controls and image lists are given. Nothing is drawn with them.
#pragma once

#include "windef.h"

#define RGB(red, green, blue)                                                                           \
    (static_cast<COLORREF>(static_cast<BYTE>(red) | static_cast<DWORD>(static_cast<BYTE>(green)) << 8 | \
                           static_cast<DWORD>(static_cast<BYTE>(blue)) << 16))

struct BITMAP {
    LONG bmType;
    LONG bmWidth;
    LONG bmHeight;
    LONG bmWidthBytes;
    WORD bmPlanes;
    WORD bmBitsPixel;
    LPVOID bmBits;
};

// A bitmap as it lies in a resource: this header, the colours, the rows from the bottom up.
struct BITMAPINFOHEADER {
    DWORD biSize;
    LONG biWidth;
    LONG biHeight;
    WORD biPlanes;
    WORD biBitCount;
    DWORD biCompression;
    DWORD biSizeImage;
    LONG biXPelsPerMeter;
    LONG biYPelsPerMeter;
    DWORD biClrUsed;
    DWORD biClrImportant;
};

#define LF_FACESIZE 32
#define FW_NORMAL 400
#define FW_BOLD 700
#define DEFAULT_CHARSET 1

struct LOGFONTW {
    LONG lfHeight;
    LONG lfWidth;
    LONG lfEscapement;
    LONG lfOrientation;
    LONG lfWeight;
    BYTE lfItalic;
    BYTE lfUnderline;
    BYTE lfStrikeOut;
    BYTE lfCharSet;
    BYTE lfOutPrecision;
    BYTE lfClipPrecision;
    BYTE lfQuality;
    BYTE lfPitchAndFamily;
    WCHAR lfFaceName[LF_FACESIZE];
};

#pragma GCC visibility push(default)
extern "C" {

HFONT WINAPI CreateFontIndirectW(const LOGFONTW* lplf);
BOOL WINAPI DeleteObject(HGDIOBJ ho);
int WINAPI GetObjectW(HGDIOBJ h, int c, LPVOID pv);

}  // extern "C"
#pragma GCC visibility pop
