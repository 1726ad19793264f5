// Warnings in the Windows event log about what the client can be told only as a bare result code.
#pragma once

#include <windows.h>

namespace kestvox {

// Identifiers of the library's message table.
enum DriverEvent : DWORD {
    ClockSourceNotValid = 0x40070001,
    MasterClockRateMismatch = 0x40070002,
    InputDataRateMismatch = 0x40070003,
    ClosedWhileBusy = 0x40070004,
};

// Writes a warning under the library's own source. Never fails visibly: without the source nothing is
// reported. Any thread; the source is opened for each report.
void ReportDriverEvent(DriverEvent event);

}  // namespace kestvox
