// The last error of each thread.
#include <windows.h>

static thread_local DWORD lastError = ERROR_SUCCESS;

DWORD WINAPI GetLastError() {
    return lastError;
}

void WINAPI SetLastError(DWORD dwErrCode) {
    lastError = dwErrCode;
}
