// A second program of the desktop asks for the configuration sheet while one is open.
#include "tests/support/sheet_test.h"

namespace {

using SecondSheet = SheetTest;

// The program is found beside the one that asks. Its exit status, when it has ended.
DWORD RunConfigure() {
    WCHAR line[] = TEXT("kestvox.exe configure");
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    PROCESS_INFORMATION program = {};
    if (!CreateProcessW(nullptr, line, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &program)) {
        return STILL_ACTIVE;
    }
    WaitForSingleObject(program.hProcess, INFINITE);
    DWORD status = STILL_ACTIVE;
    GetExitCodeProcess(program.hProcess, &status);
    CloseHandle(program.hThread);
    CloseHandle(program.hProcess);
    return status;
}

bool IsAbove(HWND window, HWND other) {
    HWND next = GetTopWindow(nullptr);
    while (next != nullptr && next != window && next != other) {
        next = GetWindow(next, GW_HWNDNEXT);
    }
    return next == window;
}

TEST_F(SecondSheet, BringsTheFirstToTheFront) {
    const Sheet sheet(Library(), Sheet::Entry::Configure);
    ASSERT_NE(sheet.Window(), nullptr);
    const HWND cover = CreateWindowW(TEXT("Static"), TEXT("cover"), WS_POPUP | WS_VISIBLE, 0, 0, 800, 800,
                                     nullptr, nullptr, nullptr, nullptr);
    SetWindowPos(cover, HWND_TOP, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE);
    EXPECT_TRUE(IsAbove(cover, sheet.Window()));
    EXPECT_EQ(RunConfigure(), 0u);
    EXPECT_TRUE(IsAbove(sheet.Window(), cover));
    DestroyWindow(cover);
    EXPECT_TRUE(sheet.IsOpen());
}

}  // namespace
