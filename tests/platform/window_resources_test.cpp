#include <windows.h>

#include <gtest/gtest.h>

#include "platform/inspect.h"

namespace {

// What the library's resources hold, by the calls that any program has for them.
TEST(Resources, AreFoundAndLoadedAndGivenBack) {
    const HMODULE module = LoadLibraryW(u"kestvox.dll");
    ASSERT_NE(module, nullptr);
    const platform::Usage before = platform::CurrentUsage();

    const HRSRC dialog = FindResourceW(module, MAKEINTRESOURCEW(102), RT_DIALOG);
    ASSERT_NE(dialog, nullptr);
    ASSERT_GT(SizeofResource(module, dialog), DWORD{sizeof(DLGTEMPLATE)});
    const auto* const data = static_cast<const DLGTEMPLATE*>(LockResource(LoadResource(module, dialog)));
    EXPECT_EQ(data->cx, 227);
    EXPECT_EQ(FindResourceW(module, MAKEINTRESOURCEW(102), RT_BITMAP), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_RESOURCE_NAME_NOT_FOUND});

    const HANDLE picture = LoadImageW(module, MAKEINTRESOURCEW(204), IMAGE_BITMAP, 0, 0, LR_DEFAULTCOLOR);
    BITMAP bitmap{};
    EXPECT_EQ(GetObjectW(picture, sizeof bitmap, &bitmap), static_cast<int>(sizeof bitmap));
    EXPECT_EQ(bitmap.bmWidth, 184);
    EXPECT_EQ(bitmap.bmHeight, 63);
    EXPECT_EQ(bitmap.bmBitsPixel, 8);
    EXPECT_TRUE(DeleteObject(picture));
    EXPECT_FALSE(DeleteObject(picture));

    const HCURSOR cursor = LoadCursorW(module, MAKEINTRESOURCEW(203));
    ICONINFO info{};
    EXPECT_TRUE(GetIconInfo(cursor, &info));
    EXPECT_EQ(info.xHotspot, 0u);
    EXPECT_EQ(info.yHotspot, 0u);
    EXPECT_EQ(LoadCursorW(module, MAKEINTRESOURCEW(203)), cursor) << "loaded once";
    EXPECT_TRUE(DestroyCursor(cursor));
    EXPECT_FALSE(DestroyCursor(cursor));

    const HCURSOR arrow = LoadCursorW(nullptr, IDC_ARROW);
    EXPECT_NE(arrow, nullptr);
    DestroyCursor(arrow);
    EXPECT_EQ(LoadCursorW(nullptr, IDC_ARROW), arrow) << "the system keeps its own";
    EXPECT_EQ(platform::CurrentUsage(), before);
    FreeLibrary(module);
}

}  // namespace
