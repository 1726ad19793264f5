// What a process opens once and keeps is no leak of the driver's: it is opened before the first test counts.
#include <windows.h>

#include <gtest/gtest.h>

namespace {

bool WarmUp() {
    int mouse[3];
    SystemParametersInfoW(SPI_GETMOUSE, 0, mouse, 0);  // Wine keeps the keys in which it looks
    SCOPED_TRACE("");                                  // watches its thread from the first trace on
    return true;
}
[[maybe_unused]] const bool warm = WarmUp();

}  // namespace
