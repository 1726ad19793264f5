// The objects of user32, gdi32 and comctl32 and their handles: windows, menus, cursors, bitmaps, image lists,
// property pages. Their handles are not kernel handles; they are values that no other process of the
// machine gives out, and that are not given out a second time.
#pragma once

#include <windows.h>

#include <memory>
#include <vector>

namespace platform {

enum class UserObjectKind { Window, Menu, Cursor, Bitmap, ImageList, PropertyPage };

class UserObject {
public:
    explicit UserObject(UserObjectKind kind) : kind_(kind) {}
    virtual ~UserObject() = default;
    UserObject(const UserObject&) = delete;
    UserObject& operator=(const UserObject&) = delete;

    UserObjectKind Kind() const { return kind_; }

private:
    const UserObjectKind kind_;
};

// A new handle for the object. Any thread, as for everything here.
void* OpenUserHandle(std::shared_ptr<UserObject> object);

// Null when the handle is closed, of another kind or was never one.
std::shared_ptr<UserObject> FindUserObject(void* handle, UserObjectKind kind);

template <typename T>
std::shared_ptr<T> FindUserObject(void* handle) {
    return std::static_pointer_cast<T>(FindUserObject(handle, T::OwnKind));
}

// False when there is no such handle of this kind.
bool CloseUserHandle(void* handle, UserObjectKind kind);

// The open window handles, and the number of open handles of all other kinds.
std::vector<HWND> WindowHandles();
int OtherUserObjectCount();

// The process that gave a handle out; 0 for the desktop and what is no handle.
DWORD ProcessOfUserHandle(void* handle);

}  // namespace platform
