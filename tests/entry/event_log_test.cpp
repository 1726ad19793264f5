// Reports in the event log and the texts that the library has for them.
#include <string>

#include "tests/support/driver_library.h"
#include "tests/support/driver_test.h"
#include "tests/support/system.h"
#include "tests/support/text.h"
#include "tests/support/wave_player.h"

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

TEST_F(EventLogTest, ClosingABusyDeviceIsReportedEachTime) {
    WavePlayer player;
    ASSERT_EQ(player.Open(0, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
    ASSERT_EQ(player.Write(Pattern(4096)), MMSYSERR_NOERROR);
    for (size_t reports = 1; reports <= 2; ++reports) {
        EXPECT_EQ(player.Close(), WAVERR_STILLPLAYING);
        const std::vector<test_system::LoggedEvent> log = test_system::EventLog();
        ASSERT_EQ(log.size(), reports);
        EXPECT_EQ(log.back().Source, u"KESTVOX.DLL");
        EXPECT_EQ(log.back().Type, EVENTLOG_WARNING_TYPE);
        EXPECT_EQ(log.back().Id, 0x40070004u);
    }
    Cards().Advance(1000000);
    EXPECT_EQ(player.Close(), MMSYSERR_NOERROR);
    EXPECT_EQ(test_system::EventLog().size(), 2u) << "an idle device closes without a report";
}

TEST_F(EventLogTest, WithoutTheSourceTheResultIsTheSame) {
    WavePlayer player;
    ASSERT_EQ(player.Open(0, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
    ASSERT_EQ(player.Write(Pattern(4096)), MMSYSERR_NOERROR);
    test_system::FailCall("RegisterEventSourceW", 1);
    EXPECT_EQ(player.Close(), WAVERR_STILLPLAYING);
    EXPECT_TRUE(test_system::EventLog().empty());
}

TEST_F(EventLogTest, TheLibraryCarriesTheTextOfEachEvent) {
    const DriverLibrary library;
    const struct {
        DWORD Id;
        const char16_t* Text;
    } messages[] = {
        {0x40070001, u"The external sample clock source is not valid.\r\n"},
        {0x40070002,
         u"The master clock sample rate does not match the sample rate selected in your application.\r\n"},
        {0x40070003, u"The incoming digital data sample rate does not match the sample rate selected in your "
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
