// Image lists: small pictures of one size, for the tree view. Nothing is drawn, so a list keeps no
// picture, only how many it was given.
#include <windows.h>
#include <commctrl.h>

#include "platform/window/user_object.h"

namespace platform {

namespace {

class ImageList final : public UserObject {
public:
    static constexpr UserObjectKind OwnKind = UserObjectKind::ImageList;

    ImageList(int width, int height) : UserObject(OwnKind), Width(width), Height(height) {}

    const int Width;
    const int Height;
    int Images = 0;  // used by one thread at a time, as the caller sees to
};

}  // namespace

}  // namespace platform

using namespace platform;

HIMAGELIST WINAPI ImageList_Create(int width, int height, UINT, int, int) {
    if (width <= 0 || height <= 0) {
        return nullptr;
    }
    return static_cast<HIMAGELIST>(OpenUserHandle(std::make_shared<ImageList>(width, height)));
}

BOOL WINAPI ImageList_Destroy(HIMAGELIST handle) {
    return CloseUserHandle(handle, UserObjectKind::ImageList) ? TRUE : FALSE;
}

// A bitmap holds as many pictures as fit side by side.
int WINAPI ImageList_Add(HIMAGELIST handle, HBITMAP picture, HBITMAP) {
    const auto list = FindUserObject<ImageList>(handle);
    BITMAP bitmap{};
    if (!list || GetObjectW(picture, sizeof(bitmap), &bitmap) == 0) {
        return -1;
    }
    const int first = list->Images;
    list->Images += bitmap.bmWidth / list->Width;
    return first;
}

BOOL WINAPI ImageList_GetIconSize(HIMAGELIST handle, int* width, int* height) {
    const auto list = FindUserObject<ImageList>(handle);
    if (!list) {
        return FALSE;
    }
    *width = list->Width;
    *height = list->Height;
    return TRUE;
}
