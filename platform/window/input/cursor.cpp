// Cursors: the system's arrow and those of resources, and the one that a thread shows.
#include "platform/loader/resources.h"
#include "platform/window/gui_thread.h"
#include "platform/window/user_object.h"

namespace platform {

namespace {

class CursorObject : public UserObject {
public:
    CursorObject() : UserObject(UserObjectKind::Cursor) {}
};

}  // namespace

}  // namespace platform

using namespace platform;

// The system's own is a number, which no handle is and nobody has to give back.
HCURSOR WINAPI LoadCursorW(HINSTANCE module, LPCWSTR name) {
    Resource resource;
    if (!module) {
        return reinterpret_cast<HCURSOR>(reinterpret_cast<ULONG_PTR>(name));
    }
    if (!FindModuleResource(module, RT_GROUP_CURSOR, name, &resource)) {
        return nullptr;
    }
    return static_cast<HCURSOR>(OpenUserHandle(std::make_shared<CursorObject>()));
}

BOOL WINAPI DestroyCursor(HCURSOR handle) {
    return CloseUserHandle(handle, UserObjectKind::Cursor) ? TRUE : FALSE;
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
