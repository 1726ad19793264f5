#include <windows.h>

// The system that the layer stands in for: Windows NT 5.0, build 2195.
DWORD WINAPI GetVersion() {
    return static_cast<DWORD>(MAKELONG(MAKEWORD(5, 0), 2195));
}
