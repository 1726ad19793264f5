// Cursors: the system's own and those of resources, and the one that a thread shows.
#include <cstring>
#include <map>
#include <mutex>

#include "platform/loader/resources.h"
#include "platform/window/gui_thread.h"
#include "platform/window/user_object.h"

namespace platform {

namespace {

class CursorObject : public UserObject {
public:
    static constexpr UserObjectKind OwnKind = UserObjectKind::Cursor;

    CursorObject(bool shared, POINT hotSpot) : UserObject(OwnKind), Shared(shared), HotSpot(hotSpot) {}

    const bool Shared;  // kept by the system: not destroyed
    const POINT HotSpot;
};

// A resource's group of cursors begins with three words, the last of which counts the entries of 14 bytes;
// each ends with the number of the cursor itself, whose data begins with the hot spot.
constexpr size_t GroupCount = 4;
constexpr size_t GroupHeader = 6;
constexpr size_t GroupEntry = 14;
constexpr size_t EntryNumber = 12;

WORD WordAt(const Resource& resource, size_t place) {
    WORD word = 0;
    if (place + sizeof word <= resource.Size) {
        std::memcpy(&word, resource.Data + place, sizeof word);
    }
    return word;
}

struct LoadedCursors {
    std::mutex Lock;  // guards the rest
    std::map<std::pair<HINSTANCE, std::u16string>, HCURSOR> ByName;
};

LoadedCursors& Loaded() {
    static auto* const loaded = new LoadedCursors;
    return *loaded;
}

// A name to look a loaded cursor up by: a text, or a number after a letter that no text has.
std::u16string Key(LPCWSTR name) {
    if (IS_INTRESOURCE(name)) {
        return {u'\0', static_cast<char16_t>(ResourceNumber(name))};
    }
    return name;
}

bool IsSystemCursor(LPCWSTR name) {
    const LPCWSTR own[] = {IDC_ARROW, IDC_IBEAM, IDC_WAIT, IDC_CROSS, IDC_SIZEALL, IDC_NO};
    for (const LPCWSTR candidate : own) {
        if (name == candidate) {
            return true;
        }
    }
    return false;
}

// False when the module has no such cursor.
bool FindHotSpot(HINSTANCE module, LPCWSTR name, POINT* hotSpot) {
    Resource group;
    Resource cursor;
    if (!FindModuleResource(module, RT_GROUP_CURSOR, name, &group)) {
        return false;
    }
    if (WordAt(group, GroupCount) == 0 || group.Size < GroupHeader + GroupEntry) {
        SetLastError(ERROR_RESOURCE_DATA_NOT_FOUND);
        return false;
    }
    const WORD number = WordAt(group, GroupHeader + EntryNumber);
    if (!FindModuleResource(module, RT_CURSOR, MAKEINTRESOURCEW(number), &cursor)) {
        return false;
    }
    *hotSpot = {WordAt(cursor, 0), WordAt(cursor, sizeof(WORD))};
    return true;
}

HCURSOR Open(bool shared, POINT hotSpot) {
    const auto cursor = static_cast<HCURSOR>(OpenUserHandle(std::make_shared<CursorObject>(shared, hotSpot)));
    if (shared) {
        KeepUserObject(cursor);
    }
    return cursor;
}

}  // namespace

}  // namespace platform

using namespace platform;

// A cursor is loaded once and kept, as in the system; the same name gives the same handle again. One that
// has been destroyed meanwhile is loaded afresh.
HCURSOR WINAPI LoadCursorW(HINSTANCE module, LPCWSTR name) {
    LoadedCursors& loaded = Loaded();
    const std::lock_guard hold(loaded.Lock);
    HCURSOR& known = loaded.ByName[{module, Key(name)}];
    if (FindUserObject<CursorObject>(known)) {
        return known;
    }
    POINT hotSpot{};
    if (!module ? !IsSystemCursor(name) : !FindHotSpot(module, name, &hotSpot)) {
        if (!module) {
            SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
        }
        return nullptr;
    }
    known = Open(!module, hotSpot);
    return known;
}

HANDLE WINAPI LoadImageW(HINSTANCE module, LPCWSTR name, UINT type, int, int, UINT) {
    switch (type) {
    case IMAGE_BITMAP:
        return LoadBitmapW(module, name);
    case IMAGE_CURSOR:
        return LoadCursorW(module, name);
    default:
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
}

BOOL WINAPI GetIconInfo(HICON handle, ICONINFO* info) {
    const auto cursor = FindUserObject<CursorObject>(handle);
    if (!cursor) {
        SetLastError(ERROR_INVALID_CURSOR_HANDLE);
        return FALSE;
    }
    *info = {FALSE, static_cast<DWORD>(cursor->HotSpot.x), static_cast<DWORD>(cursor->HotSpot.y), nullptr,
             nullptr};
    return TRUE;
}

// What the system keeps is not destroyed, and that is no fault.
BOOL WINAPI DestroyCursor(HCURSOR handle) {
    const auto cursor = FindUserObject<CursorObject>(handle);
    if (!cursor) {
        SetLastError(ERROR_INVALID_CURSOR_HANDLE);
        return FALSE;
    }
    if (!cursor->Shared) {
        CloseUserHandle(handle, UserObjectKind::Cursor);
    }
    return TRUE;
}

HCURSOR WINAPI SetCursor(HCURSOR cursor) {
    GuiThread& thread = CurrentGuiThread();
    const HCURSOR before = thread.Cursor;
    thread.Cursor = cursor;
    return before;
}

HCURSOR WINAPI GetCursor() {
    return CurrentGuiThread().Cursor;
}
