// Bitmaps and fonts: what their resources say of them. Nothing is drawn.
#include <algorithm>
#include <cstring>

#include "platform/loader/resources.h"
#include "platform/window/user_object.h"

namespace platform {

namespace {

class BitmapObject : public UserObject {
public:
    static constexpr UserObjectKind OwnKind = UserObjectKind::Bitmap;

    explicit BitmapObject(const BITMAP& description) : UserObject(OwnKind), Description(description) {}

    const BITMAP Description;
};

class FontObject : public UserObject {
public:
    static constexpr UserObjectKind OwnKind = UserObjectKind::Font;

    explicit FontObject(const LOGFONTW& description) : UserObject(OwnKind), Description(description) {}

    const LOGFONTW Description;
};

// Rows of a bitmap in memory are whole words.
LONG BytesOfRow(LONG width, WORD bitsOfPixel) {
    return (width * bitsOfPixel + 15) / 16 * 2;
}

// What GetObjectW copies: as much as there is room for, at most all.
template <typename Description>
int CopyDescription(const Description& description, int size, void* buffer) {
    if (!buffer) {
        return sizeof description;
    }
    if (size < static_cast<int>(sizeof description)) {
        return 0;
    }
    std::memcpy(buffer, &description, sizeof description);
    return sizeof description;
}

}  // namespace

}  // namespace platform

using namespace platform;

HBITMAP WINAPI LoadBitmapW(HINSTANCE module, LPCWSTR name) {
    Resource resource;
    if (!FindModuleResource(module, RT_BITMAP, name, &resource)) {
        return nullptr;
    }
    BITMAPINFOHEADER header;
    if (resource.Size < sizeof header) {
        SetLastError(ERROR_RESOURCE_DATA_NOT_FOUND);
        return nullptr;
    }
    std::memcpy(&header, resource.Data, sizeof header);
    if (header.biSize < sizeof header || header.biWidth <= 0 || header.biHeight == 0) {
        SetLastError(ERROR_RESOURCE_DATA_NOT_FOUND);
        return nullptr;
    }
    const LONG height = header.biHeight < 0 ? -header.biHeight : header.biHeight;
    const BITMAP description = {0, header.biWidth,    height, BytesOfRow(header.biWidth, header.biBitCount),
                                1, header.biBitCount, nullptr};
    return static_cast<HBITMAP>(OpenUserHandle(std::make_shared<BitmapObject>(description)));
}

HFONT WINAPI CreateFontIndirectW(const LOGFONTW* description) {
    return static_cast<HFONT>(OpenUserHandle(std::make_shared<FontObject>(*description)));
}

BOOL WINAPI DeleteObject(HGDIOBJ object) {
    return CloseUserHandle(object, UserObjectKind::Bitmap) || CloseUserHandle(object, UserObjectKind::Font)
               ? TRUE
               : FALSE;
}

int WINAPI GetObjectW(HGDIOBJ object, int size, LPVOID buffer) {
    if (const auto bitmap = FindUserObject<BitmapObject>(object)) {
        return CopyDescription(bitmap->Description, size, buffer);
    }
    if (const auto font = FindUserObject<FontObject>(object)) {
        return CopyDescription(font->Description, size, buffer);
    }
    SetLastError(ERROR_INVALID_HANDLE);
    return 0;
}
