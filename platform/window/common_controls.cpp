#include <windows.h>
#include <commctrl.h>

// There is no window class to register: nothing here makes windows.
extern "C" void WINAPI InitCommonControls() {}
