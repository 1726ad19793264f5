#include "eventlog/driver_event.h"

namespace kestvox {

void ReportDriverEvent(DriverEvent event) {
    HANDLE source = RegisterEventSourceW(nullptr, TEXT("KESTVOX.DLL"));
    if (source == nullptr) {
        return;
    }
    ReportEventW(source, EVENTLOG_WARNING_TYPE, 0, event, nullptr, 0, 0, nullptr, nullptr);
    DeregisterEventSource(source);
}

}  // namespace kestvox
