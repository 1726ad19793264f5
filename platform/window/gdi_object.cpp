// Bitmaps. Nothing is drawn, so one is no more than its handle.
#include "platform/loader/resources.h"
#include "platform/window/user_object.h"

namespace platform {

namespace {

class BitmapObject : public UserObject {
public:
    BitmapObject() : UserObject(UserObjectKind::Bitmap) {}
};

}  // namespace

}  // namespace platform

using namespace platform;

HBITMAP WINAPI LoadBitmapW(HINSTANCE module, LPCWSTR name) {
    Resource resource;
    if (!FindModuleResource(module, RT_BITMAP, name, &resource)) {
        return nullptr;
    }
    return static_cast<HBITMAP>(OpenUserHandle(std::make_shared<BitmapObject>()));
}

BOOL WINAPI DeleteObject(HGDIOBJ object) {
    return CloseUserHandle(object, UserObjectKind::Bitmap) ? TRUE : FALSE;
}
