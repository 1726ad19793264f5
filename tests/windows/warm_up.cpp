// What Wine opens in a process once, when a window first asks for it, and keeps: no leak of the driver's.
#include <windows.h>

namespace {

int mouse[3];
[[maybe_unused]] const BOOL warm = SystemParametersInfoW(SPI_GETMOUSE, 0, mouse, 0);

}  // namespace
