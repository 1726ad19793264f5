#include "front/wave_device.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

#include "front/device_query.h"
#include "front/device_table.h"
#include "front/format_mapping.h"
#include "front/host.h"
#include "front/installable_driver.h"
#include "front/unload_driver.h"

namespace front {

namespace {

bool IsWhole(const WAVEHDR* header, UINT size) {
    return header && size >= sizeof(WAVEHDR);
}

}  // namespace

UINT WaveDeviceCount(WaveDirection direction) {
    const WaveDriverUse driver;
    return CountDevices(driver, direction);
}

MMRESULT GetWaveCaps(WaveDirection direction, WaveHandle device, void* caps, UINT capsSize, UINT size) {
    if (!caps) {
        return MMSYSERR_INVALPARAM;
    }
    const WaveDriverUse driver;
    const std::shared_ptr<Device> open = TheDevices().Find(direction, device);
    const bool mapper = !open && IsMapper(device);
    const WaveHandle id = open ? open->Id : mapper ? 0 : device;
    if (id >= CountDevices(driver, direction)) {
        return MMSYSERR_BADDEVICEID;
    }
    // Drivers fill the whole structure, whatever room the caller has.
    std::vector<BYTE> whole(capsSize);
    const MMRESULT result = driver.Send(direction, static_cast<UINT>(id), MessagesOf(direction).Caps, 0,
                                        reinterpret_cast<DWORD_PTR>(whole.data()), capsSize);
    if (result == MMSYSERR_NOERROR) {
        if (mapper) {
            DescribeMapper(direction, whole.data());
        }
        std::memcpy(caps, whole.data(), std::min(size, capsSize));
    }
    return result;
}

MMRESULT CloseWave(WaveDirection direction, WaveHandle handle) {
    const WaveDriverUse driver;
    const std::shared_ptr<Device> device = TheDevices().Find(direction, handle);
    // Of two closes at a time only one may reach the driver, whose instance is gone after it.
    if (!device || device->Closing.exchange(true)) {
        return MMSYSERR_INVALHANDLE;
    }
    const MMRESULT result = device->Send(driver, MessagesOf(direction).Close);
    if (result == MMSYSERR_NOERROR) {
        TheDevices().Remove(*device);
        host::NoteClosed(direction, device->Id);
    } else {
        device->Closing = false;
    }
    return result;
}

MMRESULT GetWaveId(WaveDirection direction, WaveHandle handle, UINT* id) {
    const std::shared_ptr<Device> device = TheDevices().Find(direction, handle);
    if (!device) {
        return MMSYSERR_INVALHANDLE;
    }
    if (!id) {
        return MMSYSERR_INVALPARAM;
    }
    *id = device->Id;
    return MMSYSERR_NOERROR;
}

MMRESULT PrepareWaveHeader(WaveDirection direction, WaveHandle handle, WAVEHDR* header, UINT size) {
    const std::shared_ptr<Device> device = TheDevices().Find(direction, handle);
    if (!device) {
        return MMSYSERR_INVALHANDLE;
    }
    if (!IsWhole(header, size)) {
        return MMSYSERR_INVALPARAM;
    }
    if (FlagsOf(*header) & WHDR_PREPARED) {
        return MMSYSERR_NOERROR;
    }
    const WaveDriverUse driver;
    return device->Mapping ? device->Mapping->Prepare(header) : PrepareForDriver(driver, *device, header);
}

MMRESULT UnprepareWaveHeader(WaveDirection direction, WaveHandle handle, WAVEHDR* header, UINT size) {
    const std::shared_ptr<Device> device = TheDevices().Find(direction, handle);
    if (!device) {
        return MMSYSERR_INVALHANDLE;
    }
    if (!IsWhole(header, size)) {
        return MMSYSERR_INVALPARAM;
    }
    const DWORD flags = FlagsOf(*header);
    if (flags & WHDR_INQUEUE) {
        return WAVERR_STILLPLAYING;
    }
    if (!(flags & WHDR_PREPARED)) {
        return MMSYSERR_NOERROR;
    }
    const WaveDriverUse driver;
    return device->Mapping ? device->Mapping->Unprepare(driver, header)
                           : UnprepareForDriver(driver, *device, header);
}

MMRESULT QueueWaveHeader(WaveDirection direction, WaveHandle handle, WAVEHDR* header, UINT size) {
    const std::shared_ptr<Device> device = TheDevices().Find(direction, handle);
    if (!device) {
        return MMSYSERR_INVALHANDLE;
    }
    if (!IsWhole(header, size)) {
        return MMSYSERR_INVALPARAM;
    }
    const DWORD flags = FlagsOf(*header);
    if (!(flags & WHDR_PREPARED)) {
        return WAVERR_UNPREPARED;
    }
    if (flags & WHDR_INQUEUE) {
        return WAVERR_STILLPLAYING;
    }
    const WaveDriverUse driver;
    return device->Mapping ? device->Mapping->Queue(driver, header)
                           : QueueForDriver(driver, *device, header, size);
}

MMRESULT GetWavePosition(WaveDirection direction, WaveHandle handle, MMTIME* time, UINT size) {
    const std::shared_ptr<Device> device = TheDevices().Find(direction, handle);
    if (!device) {
        return MMSYSERR_INVALHANDLE;
    }
    if (!time || size < sizeof(MMTIME)) {
        return MMSYSERR_INVALPARAM;
    }
    const WaveDriverUse driver;
    return device->Mapping ? device->Mapping->Position(driver, time)
                           : device->Send(driver, MessagesOf(direction).Position,
                                          reinterpret_cast<DWORD_PTR>(time), size);
}

MMRESULT SendWave(WaveDirection direction, WaveHandle handle, UINT message, DWORD_PTR first,
                  DWORD_PTR second) {
    const WaveDriverUse driver;
    const std::shared_ptr<Device> device = TheDevices().Find(direction, handle);
    if (!device) {
        return MMSYSERR_INVALHANDLE;
    }
    const bool resets = message == MessagesOf(direction).Reset;
    if (device->Mapping && resets) {
        device->Mapping->Forget();
    }
    const MMRESULT result = device->Send(driver, message, first, second);
    if (device->Watch && resets) {
        host::NoteReset(direction, device->Id);
    }
    return result;
}

namespace {

// A message that has a call of its own. Of an open device whose formats are mapped these go the call's way.
std::optional<MMRESULT> SendAsCall(const Device& device, UINT message, DWORD_PTR first, DWORD_PTR second) {
    const Messages& messages = MessagesOf(device.Direction);
    auto* const header = reinterpret_cast<WAVEHDR*>(first);
    const auto size = static_cast<UINT>(second);
    if (message == messages.Prepare) {
        return PrepareWaveHeader(device.Direction, device.Handle, header, size);
    }
    if (message == messages.Unprepare) {
        return UnprepareWaveHeader(device.Direction, device.Handle, header, size);
    }
    if (message == messages.Queue) {
        return QueueWaveHeader(device.Direction, device.Handle, header, size);
    }
    if (message == messages.Position) {
        return GetWavePosition(device.Direction, device.Handle, reinterpret_cast<MMTIME*>(first), size);
    }
    return std::nullopt;
}

MMRESULT SendToOpen(const Device& device, UINT message, DWORD_PTR first, DWORD_PTR second) {
    std::optional<MMRESULT> answer = AnswerDeviceQuery(device.Id, message, first, second);
    if (!answer && device.Mapping) {
        answer = SendAsCall(device, message, first, second);
    }
    return answer ? *answer : SendWave(device.Direction, device.Handle, message, first, second);
}

}  // namespace

MMRESULT SendWaveOrId(WaveDirection direction, WaveHandle device, UINT message, DWORD_PTR first,
                      DWORD_PTR second) {
    const WaveDriverUse driver;
    const std::shared_ptr<Device> open = TheDevices().Find(direction, device);
    if (open) {
        return SendToOpen(*open, message, first, second);
    }
    const UINT count = CountDevices(driver, direction);
    const bool mapper = IsMapper(device);
    const WaveHandle number = mapper ? 0 : device;
    if (mapper) {
        if (const auto answer = AnswerMapperQuery(count, message, first, second)) {
            return *answer;
        }
    }
    if (number >= count) {
        return mapper ? MMSYSERR_BADDEVICEID : MMSYSERR_INVALHANDLE;
    }
    const auto id = static_cast<UINT>(number);
    const std::optional<MMRESULT> answer = AnswerDeviceQuery(id, message, first, second);
    return answer ? *answer : driver.Send(direction, id, message, 0, first, second);
}

void UnloadWaveDriver() {
    CloseInstallableDrivers();
    for (const std::shared_ptr<Device>& device : TheDevices().All()) {
        SendWave(device->Direction, device->Handle, MessagesOf(device->Direction).Reset);
        CloseWave(device->Direction, device->Handle);
        // The device is closed for the program even when the driver refuses.
        TheDevices().Remove(*device);
    }
    ReleaseWaveDriver();
}

}  // namespace front
