// Warnings in the Windows event log about what the client can be told only as a bare result code.
#pragma once

#include <windows.h>

#include "eventlog/message_table.h"

namespace kestvox {

enum DriverEvent : DWORD {
    ClockSourceNotValid = MESSAGE_CLOCK_SOURCE_NOT_VALID,
    MasterClockRateMismatch = MESSAGE_MASTER_CLOCK_RATE,
    InputDataRateMismatch = MESSAGE_INPUT_DATA_RATE,
    ClosedWhileBusy = MESSAGE_CLOSED_WHILE_BUSY,
};

// Whether an entry of the message table has the length that it claims, and a text that ends. The literal's
// own NUL is not part of the table.
template <DWORD Size>
constexpr bool IsMessageEntry(DWORD length, const char (&text)[Size]) {
    constexpr DWORD Header = 2 * sizeof(WORD);
    return length == Header + Size - 1 && length % 4 == 0 && text[Size - 2] == 0;
}
static_assert(IsMessageEntry(MESSAGE_CLOCK_SOURCE_NOT_VALID_LENGTH, MESSAGE_CLOCK_SOURCE_NOT_VALID_TEXT));
static_assert(IsMessageEntry(MESSAGE_MASTER_CLOCK_RATE_LENGTH, MESSAGE_MASTER_CLOCK_RATE_TEXT));
static_assert(IsMessageEntry(MESSAGE_INPUT_DATA_RATE_LENGTH, MESSAGE_INPUT_DATA_RATE_TEXT));
static_assert(IsMessageEntry(MESSAGE_CLOSED_WHILE_BUSY_LENGTH, MESSAGE_CLOSED_WHILE_BUSY_TEXT));

// Writes a warning under the library's own source, which is opened for each report. Without the source
// nothing is reported, and the caller goes on the same way. Any thread.
inline void ReportDriverEvent(DriverEvent event) {
    HANDLE source = RegisterEventSourceW(nullptr, TEXT("KESTVOX.DLL"));
    if (source == nullptr) {
        return;
    }
    ReportEventW(source, EVENTLOG_WARNING_TYPE, 0, event, nullptr, 0, 0, nullptr, nullptr);
    DeregisterEventSource(source);
}

}  // namespace kestvox
