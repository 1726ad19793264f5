#include <windows.h>

#include <gtest/gtest.h>

#include "platform/inspect.h"
#include "tests/platform/services_process.h"

namespace {

bool Report(LPCWSTR sourceName, DWORD id) {
    const HANDLE source = RegisterEventSourceW(nullptr, sourceName);
    const BOOL reported = ReportEventW(source, EVENTLOG_WARNING_TYPE, 3, id, nullptr, 0, 0, nullptr, nullptr);
    return DeregisterEventSource(source) && reported;
}

TEST(EventLog, KeepsRecordsInOrder) {
    platform::UseMachine("");
    const platform::Usage before = platform::CurrentUsage();
    EXPECT_TRUE(Report(u"KESTVOX.DLL", 0x40070004));
    EXPECT_TRUE(Report(u"Other", 7));
    EXPECT_EQ(platform::CurrentUsage(), before);

    const std::vector<platform::EventRecord> log = platform::EventLog();
    ASSERT_EQ(log.size(), 2u);
    EXPECT_EQ(log[0].Source, u"KESTVOX.DLL");
    EXPECT_EQ(log[0].Type, EVENTLOG_WARNING_TYPE);
    EXPECT_EQ(log[0].Category, 3);
    EXPECT_EQ(log[0].Id, 0x40070004u);
    EXPECT_EQ(log[1].Source, u"Other");

    platform::ClearEventLog();
    EXPECT_TRUE(platform::EventLog().empty());
    Report(u"Other", 8);
    ASSERT_EQ(platform::EventLog().size(), 1u);
    EXPECT_EQ(platform::EventLog()[0].Id, 8u);
}

TEST(EventLog, AFullRingLosesTheOldest) {
    platform::UseMachine("");
    for (DWORD id = 0; id < 1300; ++id) {
        Report(u"Busy", id);
    }
    const std::vector<platform::EventRecord> log = platform::EventLog();
    ASSERT_GE(log.size(), 256u);
    for (size_t i = 0; i < log.size(); ++i) {
        ASSERT_EQ(log[i].Id, 1300 - log.size() + i);
    }
}

TEST(EventLog, SourcesCloseAndFail) {
    platform::UseMachine("");
    const HANDLE source = RegisterEventSourceW(nullptr, u"KESTVOX.DLL");
    EXPECT_FALSE(CloseHandle(source)) << "an event source has a close of its own";
    EXPECT_TRUE(DeregisterEventSource(source));
    EXPECT_FALSE(DeregisterEventSource(source));
    EXPECT_FALSE(ReportEventW(source, EVENTLOG_WARNING_TYPE, 0, 1, nullptr, 0, 0, nullptr, nullptr));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
    platform::FailCall("RegisterEventSourceW", 1);
    EXPECT_FALSE(Report(u"KESTVOX.DLL", 1));
    EXPECT_TRUE(platform::EventLog().empty());
    EXPECT_TRUE(Report(u"KESTVOX.DLL", 2));
}

TEST(EventLog, IsTheMachines) {
    const services_test::NamedMachine machine;
    EXPECT_TRUE(services_test::InChild([] { return Report(u"Child", 9); }));
    ASSERT_EQ(platform::EventLog().size(), 1u);
    EXPECT_EQ(platform::EventLog()[0].Source, u"Child");
}

}  // namespace
