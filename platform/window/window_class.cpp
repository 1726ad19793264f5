// Window classes: those of the system and those that modules register.
#include <algorithm>
#include <mutex>

#include "platform/controls/control_classes.h"
#include "platform/loader/resources.h"
#include "platform/text/case.h"
#include "platform/window/dialog/dialog.h"
#include "platform/window/menu/menu.h"
#include "platform/window/window_object.h"

namespace platform {

namespace {

constexpr ATOM FirstAtom = 0xC000;
constexpr ATOM DialogAtom = 0x8002;  // 32770
constexpr ATOM MenuAtom = 0x8000;    // 32768
constexpr size_t LongestName = 255;

struct Classes {
    std::mutex Lock;  // guards the rest
    std::vector<std::shared_ptr<const WindowClass>> Registered;
    ATOM NextAtom = FirstAtom;
};

Classes& AllClasses() {
    static auto* const classes = new Classes;
    return *classes;
}

struct ClassName {
    std::u16string Text;
    ATOM Atom = 0;

    explicit ClassName(LPCWSTR name) {
        if (IS_INTRESOURCE(name)) {
            Atom = ResourceNumber(name);
        } else {
            Text = name;
        }
    }
    bool Names(const WindowClass& candidate) const {
        return Atom != 0 ? candidate.Atom == Atom : CompareIgnoringCase(candidate.Name, Text) == 0;
    }
};

// REQUIRES: the lock of the classes is held. A module sees its own classes and those of the system.
std::shared_ptr<const WindowClass> FindRegistered(const ClassName& name, HINSTANCE module) {
    std::shared_ptr<const WindowClass> found;
    for (const auto& candidate : AllClasses().Registered) {
        const bool visible =
            !candidate->Module || candidate->Module == module || (candidate->Style & CS_GLOBALCLASS) != 0;
        if (visible && name.Names(*candidate) && (!found || candidate->Module == module)) {
            found = candidate;
        }
    }
    return found;
}

ATOM Append(WindowClass windowClass) {
    Classes& classes = AllClasses();
    if (windowClass.Atom == 0) {
        windowClass.Atom = classes.NextAtom++;
    }
    classes.Registered.push_back(std::make_shared<const WindowClass>(std::move(windowClass)));
    return classes.Registered.back()->Atom;
}

void RegisterOwnClasses() {
    const std::lock_guard hold(AllClasses().Lock);
    Append({u"#32770", nullptr, DefDlgProcW, 0, DLGWINDOWEXTRA, nullptr, DialogAtom});
    Append({u"#32768", nullptr, MenuWindowProcedure, 0, sizeof(LONG_PTR), nullptr, MenuAtom});
}

void EnsureSystemClasses() {
    static std::once_flag once;
    std::call_once(once, [] {
        RegisterOwnClasses();
        RegisterUserControls();
    });
}

}  // namespace

std::shared_ptr<const WindowClass> FindClass(LPCWSTR name, HINSTANCE module) {
    EnsureSystemClasses();
    if (!name) {
        SetLastError(ERROR_CANNOT_FIND_WND_CLASS);
        return nullptr;
    }
    const ClassName wanted(name);
    const HINSTANCE own = module ? module : GetModuleHandleW(nullptr);
    const std::lock_guard hold(AllClasses().Lock);
    std::shared_ptr<const WindowClass> found = FindRegistered(wanted, own);
    if (!found) {
        SetLastError(ERROR_CANNOT_FIND_WND_CLASS);
    }
    return found;
}

}  // namespace platform

using namespace platform;

ATOM WINAPI RegisterClassExW(const WNDCLASSEXW* description) {
    const bool named = description->lpszClassName && !IS_INTRESOURCE(description->lpszClassName);
    if (description->cbSize != sizeof *description || !description->lpfnWndProc || !named ||
        description->cbWndExtra < 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    const ClassName name(description->lpszClassName);
    const HINSTANCE module = description->hInstance ? description->hInstance : GetModuleHandleW(nullptr);
    const std::lock_guard hold(AllClasses().Lock);
    const std::shared_ptr<const WindowClass> found = FindRegistered(name, module);
    if (name.Text.empty() || name.Text.size() > LongestName || (found && found->Module == module)) {
        SetLastError(found ? ERROR_CLASS_ALREADY_EXISTS : ERROR_INVALID_PARAMETER);
        return 0;
    }
    return Append({name.Text, module, description->lpfnWndProc, description->style, description->cbWndExtra,
                   description->hCursor, 0});
}

ATOM WINAPI RegisterClassW(const WNDCLASSW* description) {
    const WNDCLASSEXW extended = {
        sizeof extended,           description->style,         description->lpfnWndProc,
        description->cbClsExtra,   description->cbWndExtra,    description->hInstance,
        description->hIcon,        description->hCursor,       description->hbrBackground,
        description->lpszMenuName, description->lpszClassName, nullptr};
    return RegisterClassExW(&extended);
}

BOOL WINAPI UnregisterClassW(LPCWSTR name, HINSTANCE module) {
    const ClassName wanted(name);
    Classes& classes = AllClasses();
    const std::lock_guard hold(classes.Lock);
    const HINSTANCE owner = module ? module : GetModuleHandleW(nullptr);
    const auto found = std::find_if(
        classes.Registered.begin(), classes.Registered.end(),
        [&](const auto& candidate) { return candidate->Module == owner && wanted.Names(*candidate); });
    if (found == classes.Registered.end()) {
        SetLastError(ERROR_CLASS_DOES_NOT_EXIST);
        return FALSE;
    }
    // The windows of a class share it, so an owner besides this list is a window.
    if (found->use_count() > 1) {
        SetLastError(ERROR_CLASS_HAS_WINDOWS);
        return FALSE;
    }
    classes.Registered.erase(found);
    return TRUE;
}

int WINAPI GetClassNameW(HWND window, LPWSTR buffer, int size) {
    const LockedWindow found(window);
    if (!found || size <= 0) {
        return 0;
    }
    const std::u16string& name = found->Class->Name;
    const size_t length = std::min(name.size(), static_cast<size_t>(size) - 1);
    name.copy(buffer, length);
    buffer[length] = 0;
    return static_cast<int>(length);
}
