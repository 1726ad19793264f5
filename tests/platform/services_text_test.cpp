#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/text/unicode.h"
#include "tests/platform/fake_driver/fake_driver.h"

namespace {

template <typename... Arguments>
std::u16string Format(LPCWSTR format, Arguments... arguments) {
    std::vector<WCHAR> buffer(1025, u'#');
    const int length = wsprintfW(buffer.data(), format, arguments...);
    EXPECT_EQ(lstrlenW(buffer.data()), length);
    EXPECT_EQ(buffer[1024], u'#') << "written behind the limit";
    return buffer.data();
}

TEST(FormattedText, Texts) {
    EXPECT_EQ(Format(u"%s Analog", u"Kestrelvox"), u"Kestrelvox Analog");
    EXPECT_EQ(Format(u"%hs|%S|%hS", "narrow", "other", "too"), u"narrow|other|too");
    EXPECT_EQ(Format(u"%ls|%5s|%-5s|", u"wide", u"ab", u"ab"), u"wide|   ab|ab   |");
    EXPECT_EQ(Format(u"%.2s|%5.1s", u"abc", u"xyz"), u"ab|    x");
    EXPECT_EQ(Format(u"%hc.%02u", 'B', 3u), u"B.03");
    EXPECT_EQ(Format(u"%c%C%3c", u'\u03A9', 'n', u'w'), u"\u03A9n  w");
    EXPECT_EQ(Format(u"%hs", "\xE9"), u"\u00E9");
    EXPECT_EQ(Format(u"%s", static_cast<LPCWSTR>(nullptr)), u"(null)");
    EXPECT_EQ(Format(u"100%% of %q"), u"100% of q");
    EXPECT_EQ(Format(u"ends in %"), u"ends in ");
}

TEST(FormattedText, Numbers) {
    EXPECT_EQ(Format(u"\\\\.\\%s%lu", u"Kestrelvox", DWORD{15}), u"\\\\.\\Kestrelvox15");
    EXPECT_EQ(Format(u"%u.%02u.%04u", 1u, 2u, 37u), u"1.02.0037");
    EXPECT_EQ(Format(u"%u %lu", 0u, 0xFFFFFFFFu), u"0 4294967295");
    EXPECT_EQ(Format(u"%d %i %ld", -1, 7, INT32_MIN), u"-1 7 -2147483648");
    EXPECT_EQ(Format(u"%05d|%5d|%-5d|", -42, -42, -42), u"-0042|  -42|-42  |");
    EXPECT_EQ(Format(u"%x %X %08lx %#x", 0xABCu, 0xABCu, 0xBEEFu, 0x10u), u"abc ABC 0000beef 0x10");
    EXPECT_EQ(Format(u"%.3u|%6.3u|%-06u|", 7u, 7u, 7u), u"007|   007|7     |");
    EXPECT_EQ(Format(u"%hu %hd", 0x10001u, 0xFFFF), u"1 -1");
}

TEST(FormattedText, StopsAtTheLimit) {
    const std::u16string longText(2000, u'x');
    EXPECT_EQ(Format(u"%s", longText.c_str()), std::u16string(1023, u'x'));
    EXPECT_EQ(Format(u"%5000u", 1u).size(), 1023u);
}

TEST(Strings, Utf8) {
    const std::u16string text = u"a\u00E9\u20AC\U0001F3B5";
    const std::string utf8 = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xB5";
    EXPECT_EQ(platform::ToUtf8(text), utf8);
    EXPECT_EQ(platform::ToUtf16(utf8), text);
    EXPECT_EQ(platform::ToUtf16("\xC0\x80|\xED\xA0\x80|\xE2\x82"),
              u"\uFFFD\uFFFD|\uFFFD\uFFFD\uFFFD|\uFFFD\uFFFD");
    EXPECT_EQ(platform::ToUtf8(u"\xD800x"), "\xEF\xBF\xBDx");
}

class ModuleText : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(module_ = LoadLibraryW(fake_driver::FileName)); }
    void TearDown() override { FreeLibrary(module_); }

    HMODULE module_ = nullptr;
};

TEST_F(ModuleText, LoadsStrings) {
    WCHAR buffer[32];
    EXPECT_EQ(LoadStringW(module_, 15, buffer, 32), 17);
    EXPECT_EQ(std::u16string(buffer), u"last of its block");
    EXPECT_EQ(LoadStringW(module_, 16, buffer, 6), 5);
    EXPECT_EQ(std::u16string(buffer), u"first");
    EXPECT_EQ(LoadStringW(module_, 18, buffer, 32), 7);

    EXPECT_EQ(LoadStringW(module_, 17, buffer, 32), 0) << "a gap in a block";
    EXPECT_EQ(buffer[0], 0);
    EXPECT_EQ(LoadStringW(module_, 4000, buffer, 32), 0);
    buffer[0] = u'k';
    EXPECT_EQ(LoadStringW(module_, 15, buffer, 0), 0);
    EXPECT_EQ(buffer[0], u'k');
}

}  // namespace
