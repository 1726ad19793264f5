#include <windows.h>

#include <gtest/gtest.h>

#include <vector>

#include "platform/inspect.h"
#include "tests/platform/services_process.h"

namespace {

constexpr LPCWSTR Path = u"System\\Services\\Card0";

class Registry : public testing::Test {
protected:
    void SetUp() override {
        platform::UseMachine("");
        before_ = platform::CurrentUsage();
        ASSERT_EQ(RegCreateKeyW(HKEY_LOCAL_MACHINE, Path, &key_), ERROR_SUCCESS);
    }
    void TearDown() override {
        RegCloseKey(key_);
        EXPECT_EQ(platform::CurrentUsage(), before_);
    }

    static LONG SetWord(HKEY key, LPCWSTR name, DWORD value) {
        return RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value);
    }
    static LONG QueryWord(HKEY key, LPCWSTR name, DWORD* value) {
        DWORD size = sizeof *value;
        return RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(value), &size);
    }

    HKEY key_ = nullptr;
    platform::Usage before_ = {};
};

TEST_F(Registry, KeysAreATreeWithoutCase) {
    HKEY other = nullptr;
    ASSERT_EQ(SetWord(key_, u"Left24", 1), ERROR_SUCCESS);
    ASSERT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, u"SYSTEM\\services\\CARD0", 0, KEY_READ, &other),
              ERROR_SUCCESS);
    DWORD value = 0;
    EXPECT_EQ(QueryWord(other, u"left24", &value), ERROR_SUCCESS);
    EXPECT_EQ(value, 1u);
    RegCloseKey(other);

    ASSERT_EQ(RegCreateKeyW(HKEY_LOCAL_MACHINE, Path, &other), ERROR_SUCCESS) << "opens what is there";
    EXPECT_EQ(QueryWord(other, u"Left24", &value), ERROR_SUCCESS);
    RegCloseKey(other);

    EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, u"System\\Card0", 0, KEY_READ, &other), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegOpenKeyExW(HKEY_USERS, Path, 0, KEY_READ, &other), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, u"\\System", 0, KEY_READ, &other), ERROR_BAD_PATHNAME);
}

TEST_F(Registry, ValuesKeepTypeAndExactSize) {
    const BYTE bytes[5] = {1, 2, 3, 4, 5};
    ASSERT_EQ(RegSetValueExW(key_, u"Monitor", 0, REG_BINARY, bytes, 5), ERROR_SUCCESS);
    DWORD type = 0;
    DWORD size = 0;
    EXPECT_EQ(RegQueryValueExW(key_, u"Monitor", nullptr, &type, nullptr, &size), ERROR_SUCCESS);
    EXPECT_EQ(type, DWORD{REG_BINARY});
    EXPECT_EQ(size, 5u);

    BYTE buffer[8] = {9, 9, 9, 9, 9, 9, 9, 9};
    size = 4;
    EXPECT_EQ(RegQueryValueExW(key_, u"Monitor", nullptr, &type, buffer, &size), ERROR_MORE_DATA);
    EXPECT_EQ(size, 5u);
    EXPECT_EQ(buffer[0], 9);
    size = 8;
    EXPECT_EQ(RegQueryValueExW(key_, u"Monitor", nullptr, nullptr, buffer, &size), ERROR_SUCCESS);
    EXPECT_EQ(size, 5u);
    EXPECT_EQ(std::vector(buffer, buffer + 6), (std::vector<BYTE>{1, 2, 3, 4, 5, 9}));
    EXPECT_EQ(RegQueryValueExW(key_, u"Monitor", nullptr, nullptr, buffer, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegQueryValueExW(key_, u"Absent", nullptr, &type, nullptr, nullptr), ERROR_FILE_NOT_FOUND);

    ASSERT_EQ(SetWord(key_, u"Monitor", 7), ERROR_SUCCESS) << "a value may change its type and size";
    EXPECT_EQ(RegQueryValueExW(key_, u"MONITOR", nullptr, &type, nullptr, &size), ERROR_SUCCESS);
    EXPECT_EQ(type, DWORD{REG_DWORD});
    EXPECT_EQ(size, 4u);

    EXPECT_EQ(RegDeleteValueW(key_, u"monitor"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteValueW(key_, u"monitor"), ERROR_FILE_NOT_FOUND);
}

}  // namespace
