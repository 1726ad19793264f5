// Questions that the system itself answers: about devices to programs that know later systems, and about the
// wave mapper.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <optional>

#include "front/wave_device.h"

namespace front {

// WAVE_MAPPER, or what 16-bit programs call it. MCI devices still do.
bool IsMapper(WaveHandle device);

// The answer to a message for a device that is there, open or not; nothing when it is for the driver. The
// name of a device's interface is that of its card's device file.
std::optional<MMRESULT> AnswerDeviceQuery(UINT device, UINT message, DWORD_PTR first, DWORD_PTR second);

// The same for the mapper. The preferred device is the first of `count`.
std::optional<MMRESULT> AnswerMapperQuery(UINT count, UINT message, DWORD_PTR first, DWORD_PTR second);

// Makes the capabilities of the mapper of those of the first device.
void DescribeMapper(WaveDirection direction, void* caps);

}  // namespace front
