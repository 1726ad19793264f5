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

}  // namespace
