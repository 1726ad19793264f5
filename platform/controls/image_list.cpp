// Image lists: small pictures for the tree view. Nothing is drawn, so a list keeps no picture, only how many
// it was given.
#include <windows.h>
#include <commctrl.h>

#include "platform/window/user_object.h"

namespace platform {

namespace {

class ImageList final : public UserObject {
public:
    static constexpr UserObjectKind OwnKind = UserObjectKind::ImageList;

    ImageList() : UserObject(OwnKind) {}

    int Images = 0;  // used by one thread at a time, as the caller sees to
};

}  // namespace

}  // namespace platform

using namespace platform;

HIMAGELIST WINAPI ImageList_Create(int, int, UINT, int, int) {
    return static_cast<HIMAGELIST>(OpenUserHandle(std::make_shared<ImageList>()));
}

BOOL WINAPI ImageList_Destroy(HIMAGELIST handle) {
    return CloseUserHandle(handle, UserObjectKind::ImageList) ? TRUE : FALSE;
}

int WINAPI ImageList_Add(HIMAGELIST handle, HBITMAP, HBITMAP) {
    const auto list = FindUserObject<ImageList>(handle);
    return list ? list->Images++ : -1;
}
