// gdi32: bitmaps. Nothing is drawn with them.
#pragma once

#include "windef.h"

#pragma GCC visibility push(default)
extern "C" {

BOOL WINAPI DeleteObject(HGDIOBJ ho);

}  // extern "C"
#pragma GCC visibility pop
