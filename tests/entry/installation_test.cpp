// What installation and removal write into the registry, and the texts of the event log to which that points.
#include "tests/support/driver_test.h"
#include "tests/support/registry.h"

namespace {

const std::u16string ServiceKey = u"System\\CurrentControlSet\\Services\\Kestrelvox";
const std::u16string SystemSource = u"System\\CurrentControlSet\\Services\\EventLog\\System\\Kestrelvox";
const std::u16string ApplicationSource =
    u"System\\CurrentControlSet\\Services\\EventLog\\Application\\KESTVOX.DLL";

class InstallationTest : public DriverTest {
protected:
    static void ExpectInstalled(DWORD start) {
        const auto text = [](const char16_t* data) { return TextValue(REG_SZ, data); };
        const auto path = [](const char16_t* data) { return TextValue(REG_EXPAND_SZ, data); };
        const struct {
            std::u16string Key;
            const char16_t* Name;
            RegistryValue Value;
        } entries[] = {
            {ServiceKey, u"ErrorControl", NumberValue(1)},
            {ServiceKey, u"Group", text(u"Base")},
            {ServiceKey, u"ImagePath", path(u"\\SystemRoot\\System32\\drivers\\kestvox.sys")},
            {ServiceKey, u"Start", NumberValue(start)},
            {ServiceKey, u"Type", NumberValue(1)},
            {SystemSource, u"EventMessageFile",
             path(u"%SystemRoot%\\System32\\IoLogMsg.dll,%SystemRoot%\\System32\\drivers\\kestvox.sys")},
            {SystemSource, u"TypesSupported", NumberValue(7)},
            {ApplicationSource, u"EventMessageFile",
             path(u"%SystemRoot%\\System32\\IoLogMsg.dll,%SystemRoot%\\System32\\KESTVOX.DLL")},
            {ApplicationSource, u"TypesSupported", NumberValue(7)},
        };
        for (const auto& entry : entries) {
            EXPECT_EQ(ReadRegistry(entry.Key, entry.Name), entry.Value) << testing::PrintToString(entry.Name);
        }
    }
};

TEST_F(InstallationTest, RemovalDisablesTheServiceAndDeletesNothing) {
    const DriverLibrary library;
    EXPECT_EQ(library.DriverProc(DRV_REMOVE), DRVCNF_RESTART);
    EXPECT_FALSE(RegistryKeyExists(ServiceKey)) << "without an installation nothing is made";

    library.DriverProc(DRV_INSTALL);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(library.DriverProc(DRV_REMOVE), DRVCNF_RESTART);
        ExpectInstalled(4);
    }
    library.DriverProc(DRV_INSTALL);
    ExpectInstalled(1);
}

TEST_F(InstallationTest, AKeyThatCannotBeMadeEndsOrIsPassedOver) {
    const struct {
        unsigned FailingKey;
        bool Service, System, Application;
    } cases[] = {{1, false, false, false}, {2, true, false, true}, {3, true, true, false}};
    for (const auto& expected : cases) {
        SCOPED_TRACE(expected.FailingKey);
        const DriverLibrary library;
        test_system::FailCall("RegCreateKeyW", expected.FailingKey);
        EXPECT_EQ(library.DriverProc(DRV_INSTALL), DRVCNF_RESTART);
        test_system::ClearCallFailures();
        EXPECT_EQ(RegistryKeyExists(ServiceKey), expected.Service);
        EXPECT_EQ(RegistryKeyExists(SystemSource), expected.System);
        EXPECT_EQ(RegistryKeyExists(ApplicationSource), expected.Application);
        for (const std::u16string& key : {ServiceKey, SystemSource, ApplicationSource}) {
            RegDeleteKeyW(HKEY_LOCAL_MACHINE, Wide(key));
        }
    }
}

TEST_F(InstallationTest, TheLibraryCarriesTheTextOfEachEvent) {
    const DriverLibrary library;
    const char16_t* const texts[] = {
        u"",
        u"The external sample clock source is not valid.\r\n",
        u"The master clock sample rate does not match the sample rate selected in your application.\r\n",
        (u"The incoming digital data sample rate does not match the sample rate selected in your "
         u"application.\r\n"),
        u"The application tried to close the driver while it was still busy.\r\n",
        u"",
    };
    DWORD id = 0x40070000;
    for (const char16_t* expected : texts) {
        WCHAR text[256] = {};
        FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_IGNORE_INSERTS, library.Module(), id++, 0,
                       text, 256, nullptr);
        EXPECT_EQ(Utf16(text), expected);
    }
}

}  // namespace
