// A client's callback behind one of ours: what the driver is opened with in its place, and how the client is
// told.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include "front/device_table.h"
#include "front/wave_device.h"

namespace front {

// `client`, with the callback function at that address, which is given `instance`.
WaveOpenRequest WithCallback(WaveOpenRequest client, DWORD_PTR callback, const void* instance);

// In the way that the client has asked for, if any.
void TellClient(const Device& device, const WaveOpenRequest& client, DWORD message, DWORD_PTR first,
                DWORD_PTR second);

}  // namespace front
