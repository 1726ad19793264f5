#include <windows.h>
#include <commctrl.h>
#include <mmddk.h>
#include <prsht.h>

#include <cstdio>
#include <string>

#include "tools/command_error.h"
#include "tools/commands/commands.h"
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

DWORD StyleOf(HWND control) {
    return static_cast<DWORD>(GetWindowLongPtrW(control, GWL_STYLE));
}

std::string Quoted(HWND control) {
    std::string text = "'" + Narrow(WindowText(control)) + "'";
    for (char& character : text) {
        if (character == '\n') {
            character = ' ';
        }
    }
    return text;
}

int Ask(HWND control, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    return static_cast<int>(SendMessageW(control, message, wParam, lParam));
}

std::string DescribeButton(HWND button) {
    const bool checked = Ask(button, BM_GETCHECK) == BST_CHECKED;
    switch (StyleOf(button) & BS_TYPEMASK) {
    case BS_GROUPBOX:
        return "group    " + Quoted(button);
    case BS_AUTORADIOBUTTON:
        return std::string("radio    ") + (checked ? "(*) " : "( ) ") + Quoted(button);
    case BS_AUTOCHECKBOX:
        return std::string("check    ") + (checked ? "[x] " : "[ ] ") + Quoted(button);
    default:
        return "button   " + Quoted(button);
    }
}

std::string DescribeStatic(HWND label) {
    return (StyleOf(label) & SS_TYPEMASK) == SS_BITMAP ? "picture" : "label    " + Quoted(label);
}

std::string DescribeEdit(HWND edit) {
    return ((StyleOf(edit) & ES_READONLY) != 0 ? "value    " : "edit     ") + Quoted(edit);
}

std::string DescribeList(HWND list) {
    std::string text = "list     ";
    const int chosen = Ask(list, CB_GETCURSEL);
    for (int entry = 0; entry < Ask(list, CB_GETCOUNT); ++entry) {
        const auto index = static_cast<WPARAM>(entry);
        WideText name(static_cast<size_t>(Ask(list, CB_GETLBTEXTLEN, index)) + 1, 0);
        Ask(list, CB_GETLBTEXT, index, reinterpret_cast<LPARAM>(name.data()));
        name.pop_back();
        text += (entry == 0 ? "" : " | ") + std::string(entry == chosen ? "*" : "") + Narrow(name);
    }
    return text;
}

std::string DescribeSlider(HWND slider) {
    return "slider   " + std::to_string(Ask(slider, TBM_GETPOS)) + " of " +
           std::to_string(Ask(slider, TBM_GETRANGEMIN)) + " to " +
           std::to_string(Ask(slider, TBM_GETRANGEMAX));
}

std::string DescribeItems(HWND tree, UINT relation, HTREEITEM from, int depth) {
    std::string lines;
    auto item = reinterpret_cast<HTREEITEM>(
        SendMessageW(tree, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(from)));
    while (item != nullptr) {
        WCHAR text[256] = {};
        TVITEMW wanted = {};
        wanted.mask = TVIF_HANDLE | TVIF_TEXT;
        wanted.hItem = item;
        wanted.pszText = text;
        wanted.cchTextMax = 256;
        SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&wanted));
        lines += "\n               " + std::string(static_cast<size_t>(depth) * 2, ' ') + Narrow(text);
        lines += DescribeItems(tree, TVGN_CHILD, item, depth + 1);
        item = reinterpret_cast<HTREEITEM>(
            SendMessageW(tree, TVM_GETNEXTITEM, TVGN_NEXT, reinterpret_cast<LPARAM>(item)));
    }
    return lines;
}

std::string DescribeTree(HWND tree) {
    return "tree" + DescribeItems(tree, TVGN_ROOT, nullptr, 0);
}

struct ControlKind {
    const WCHAR* Class;
    std::string (*Describe)(HWND control);
};
constexpr ControlKind Kinds[] = {
    {TEXT("Button"), DescribeButton}, {TEXT("Static"), DescribeStatic},  {TEXT("Edit"), DescribeEdit},
    {TEXT("ComboBox"), DescribeList}, {TRACKBAR_CLASSW, DescribeSlider}, {WC_TREEVIEWW, DescribeTree},
};

std::string DescribeControl(HWND control) {
    const WideText name = WindowClass(control);
    for (const ControlKind& kind : Kinds) {
        if (lstrcmpiW(name.c_str(), kind.Class) == 0) {
            return kind.Describe(control) + (IsWindowEnabled(control) ? "" : "  (disabled)");
        }
    }
    return Narrow(name) + " " + Quoted(control);
}

void PrintPage(HWND page) {
    for (HWND control = GetWindow(page, GW_CHILD); control != nullptr;
         control = GetWindow(control, GW_HWNDNEXT)) {
        const int number = GetDlgCtrlID(control);
        const bool named = number > 0 && number < 0xFFFF;
        std::printf("  %4s  %s\n", named ? std::to_string(number).c_str() : "",
                    DescribeControl(control).c_str());
    }
}

void AwaitEnter() {
    std::puts("-- press Enter");
    std::fflush(stdout);
    int character;
    do {
        character = std::getchar();
    } while (character != '\n' && character != EOF);
}

int PrintSheet(const DriverSheet& driver, bool step) {
    const SheetWindow sheet(Caption, [&driver] { return driver.Show(); });
    if (sheet.Window() == nullptr) {
        throw CommandError("no sheet comes up: there is no card, or another sheet is open");
    }
    const std::vector<WideText> titles = sheet.Titles();
    for (size_t page = 0; page < titles.size(); ++page) {
        const HWND window = sheet.ShowPage(page);
        std::printf("%s%s\n", page == 0 ? "" : "\n", Narrow(titles[page]).c_str());
        PrintPage(window);
        if (step) {
            AwaitEnter();
        }
    }
    return ExitSuccess;
}

}  // namespace

int Configure(const ConfigureOptions& options) {
    const Scene scene(options.Scene);
    const DriverSheet driver;
    if (options.Text || options.Step || !HostShowsWindows()) {
        return PrintSheet(driver, options.Step);
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
