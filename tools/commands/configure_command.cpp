#include <windows.h>
#include <commctrl.h>
#include <mmddk.h>
#include <prsht.h>

#include <cstdio>
#include <string>

#include "tools/command_error.h"
#include "tools/commands/commands.h"
#include "tools/commands/sheet_text.h"
#include "tools/machine/host.h"
#include "tools/system/sheet_window.h"

namespace kestvox {
namespace {

constexpr const WCHAR* Caption = TEXT("Kestrelvox(TM) Configuration");

// The driver's export, through which any program opens the sheet.
class DriverSheet {
public:
    // The wave call has the multimedia system load the driver first, as it does it.
    DriverSheet() : devices_(waveOutGetNumDevs()), driver_(LoadLibraryW(TEXT("kestvox.dll"))) {
        const FARPROC entry = driver_ ? GetProcAddress(driver_, "Configure") : nullptr;
        configure_ = reinterpret_cast<ConfigureEntry>(reinterpret_cast<void*>(entry));
        if (configure_ == nullptr) {
            throw CommandError("the driver kestvox.dll has no configuration");
        }
    }
    ~DriverSheet() { FreeLibrary(driver_); }
    DriverSheet(const DriverSheet&) = delete;
    DriverSheet& operator=(const DriverSheet&) = delete;

    LONG Show() const { return static_cast<LONG>(configure_()); }

private:
    using ConfigureEntry = DWORD(WINAPI*)();
    UINT devices_;
    HMODULE driver_;
    ConfigureEntry configure_ = nullptr;
};

void AwaitEnter() {
    std::puts("-- press Enter");
    std::fflush(stdout);
    int character;
    do {
        character = std::getchar();
    } while (character != '\n' && character != EOF);
}

// Cancel has a page with sliders set the card to what is stored. Whoever only looked leaves the card as it
// is.
WNDPROC pageProcedure = nullptr;
LRESULT CALLBACK IgnoreCancel(HWND page, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NOTIFY && reinterpret_cast<const NMHDR*>(lParam)->code == PSN_RESET) {
        return 0;
    }
    return CallWindowProcW(pageProcedure, page, message, wParam, lParam);
}

void KeepSliders(HWND page) {
    if (FindControl(page, TRACKBAR_CLASSW) != nullptr) {
        pageProcedure = reinterpret_cast<WNDPROC>(
            SetWindowLongPtrW(page, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(IgnoreCancel)));
    }
}

int PrintSheet(const DriverSheet& driver, const ConfigureOptions& options) {
    const SheetWindow sheet(Caption, [&driver] { return driver.Show(); });
    if (sheet.Window() == nullptr) {
        throw CommandError("no sheet comes up: there is no card, or another sheet is open");
    }
    if (options.Step) {
        // Whoever steps through it looks at it.
        SetWindowPos(sheet.Window(), HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    }
    const std::vector<std::string> titles = TellApart(sheet.Titles());
    std::string pages;
    for (size_t page = 0; page < titles.size(); ++page) {
        const HWND window = sheet.ShowPage(page);
        KeepSliders(window);
        const PageText text = ReadPage(window, titles[page], titles);
        if (options.Json) {
            pages += (page == 0 ? "" : ",\n ") + JsonOf(text);
            continue;
        }
        std::printf("%s%s", page == 0 ? "" : "\n", LinesOf(text).c_str());
        if (options.Step) {
            AwaitEnter();
        }
    }
    if (options.Json) {
        std::printf("[%s]\n", pages.c_str());
    }
    return ExitSuccess;
}

}  // namespace

int Configure(const ConfigureOptions& options) {
    const Scene scene(options.Scene);
    const DriverSheet driver;
    if (options.Text || options.Step || options.Json || !HostShowsWindows()) {
        return PrintSheet(driver, options);
    }
    switch (driver.Show()) {
    case DRVCNF_CANCEL:
        throw CommandError("there is no card to configure");
    case DRVCNF_RESTART:
        std::puts("Restart Windows for the changes to take effect.");
        return ExitSuccess;
    default:
        return ExitSuccess;
    }
}

}  // namespace kestvox
