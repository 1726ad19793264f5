// The texts that the library carries for its reports in the event log.
#include <string>

#include "tests/support/driver_library.h"
#include "tests/support/driver_test.h"
#include "tests/support/text.h"

namespace {

class EventLogTest : public DriverTest {
protected:
    static std::u16string Message(HMODULE library, DWORD id) {
        WCHAR text[256] = {};
        FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_IGNORE_INSERTS, library, id, 0, text, 256,
                       nullptr);
        return Utf16(text);
    }
};

TEST_F(EventLogTest, TheLibraryCarriesTheTextOfEachEvent) {
    const DriverLibrary library;
    const struct {
        DWORD Id;
        const char16_t* Text;
    } messages[] = {
        {0x40070001, u"The external sample clock source is not valid.\r\n"},
        {0x40070002,
         u"The master clock sample rate does not match the sample rate selected in your application.\r\n"},
        {0x40070003,
         u"The incoming digital data sample rate does not match the sample rate selected in your "
         u"application.\r\n"},
        {0x40070004, u"The application tried to close the driver while it was still busy.\r\n"},
    };
    for (const auto& message : messages) {
        EXPECT_EQ(Message(library.Module(), message.Id), message.Text);
    }
    EXPECT_EQ(Message(library.Module(), 0x40070000), u"");
    EXPECT_EQ(Message(library.Module(), 0x40070005), u"");
}

}  // namespace
