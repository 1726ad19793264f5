// Sees each header that the driver gives back, for whoever looks on (host.h). Clients that want no callback
// have none that could be seen, so the driver is opened with one of ours, which passes on what it is told.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include "front/device_table.h"
#include "front/wave_device.h"

namespace front {

class HeaderWatch {
public:
    // `request` is what the driver would be opened with. The device outlives this.
    HeaderWatch(const Device& device, const WaveOpenRequest& request) : device_(device), client_(request) {}

    // What the driver is opened with: it calls back here.
    WaveOpenRequest DriverRequest() const;

private:
    static void CALLBACK DriverCalls(HDRVR, DWORD message, DWORD_PTR watch, DWORD_PTR first,
                                     DWORD_PTR second);

    const Device& device_;
    const WaveOpenRequest client_;
};

}  // namespace front
