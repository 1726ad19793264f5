#include "front/device_table.h"

#include <mmddk.h>

#include "front/format_mapping.h"
#include "front/header_watch.h"
#include "front/host.h"

namespace front {

namespace {

constexpr Messages MessageTable[] = {
    {WODM_GETNUMDEVS, WODM_GETDEVCAPS, WODM_OPEN, WODM_CLOSE, WODM_PREPARE, WODM_UNPREPARE, WODM_WRITE,
     WODM_RESET, WODM_GETPOS},
    {WIDM_GETNUMDEVS, WIDM_GETDEVCAPS, WIDM_OPEN, WIDM_CLOSE, WIDM_PREPARE, WIDM_UNPREPARE, WIDM_ADDBUFFER,
     WIDM_RESET, WIDM_GETPOS},
};

}  // namespace

const Messages& MessagesOf(WaveDirection direction) {
    return MessageTable[static_cast<int>(direction)];
}

Device::Device(WaveDirection direction, UINT id, WaveHandle handle)
    : Direction(direction), Id(id), Handle(handle) {}

Device::~Device() = default;

std::shared_ptr<Device> DeviceTable::Add(WaveDirection direction, UINT id) {
    const std::lock_guard hold(lock_);
    auto device = std::make_shared<Device>(direction, id, nextHandle_);
    nextHandle_ += 0x10;
    devices_[device->Handle] = device;
    return device;
}

void DeviceTable::Remove(const Device& device) {
    const std::lock_guard hold(lock_);
    devices_.erase(device.Handle);
}

std::shared_ptr<Device> DeviceTable::Find(WaveDirection direction, WaveHandle handle) {
    const std::lock_guard hold(lock_);
    const auto found = devices_.find(handle);
    if (found == devices_.end() || found->second->Direction != direction) {
        return nullptr;
    }
    return found->second;
}

std::vector<std::shared_ptr<Device>> DeviceTable::All() {
    const std::lock_guard hold(lock_);
    std::vector<std::shared_ptr<Device>> all;
    for (const auto& [handle, device] : devices_) {
        all.push_back(device);
    }
    return all;
}

DeviceTable& TheDevices() {
    static auto* const devices = new DeviceTable;
    return *devices;
}

UINT CountDevices(const WaveDriverUse& driver, WaveDirection direction) {
    const UINT message = MessagesOf(direction).DeviceCount;
    return driver.Serves(direction) ? driver.Send(direction, 0, message, 0, 0, 0) : 0;
}

DWORD FlagsOf(const WAVEHDR& header) {
    return __atomic_load_n(&header.dwFlags, __ATOMIC_ACQUIRE);
}

void SetFlags(WAVEHDR& header, DWORD flags) {
    __atomic_store_n(&header.dwFlags, flags, __ATOMIC_RELEASE);
}

// A header that is used again brings the marks of its last time along.
MMRESULT PrepareForDriver(const WaveDriverUse& driver, const Device& device, WAVEHDR* header) {
    if (FlagsOf(*header) & WHDR_PREPARED) {
        return MMSYSERR_NOERROR;
    }
    const MMRESULT result = device.Send(driver, MessagesOf(device.Direction).Prepare,
                                        reinterpret_cast<DWORD_PTR>(header), sizeof *header);
    if (result != MMSYSERR_NOTSUPPORTED) {
        return result;
    }
    SetFlags(*header, (FlagsOf(*header) & ~DWORD{WHDR_DONE | WHDR_INQUEUE}) | WHDR_PREPARED);
    return MMSYSERR_NOERROR;
}

MMRESULT UnprepareForDriver(const WaveDriverUse& driver, const Device& device, WAVEHDR* header) {
    if (!(FlagsOf(*header) & WHDR_PREPARED)) {
        return MMSYSERR_NOERROR;
    }
    const MMRESULT result = device.Send(driver, MessagesOf(device.Direction).Unprepare,
                                        reinterpret_cast<DWORD_PTR>(header), sizeof *header);
    if (result != MMSYSERR_NOTSUPPORTED) {
        return result;
    }
    SetFlags(*header, FlagsOf(*header) & ~DWORD{WHDR_PREPARED});
    return MMSYSERR_NOERROR;
}

// Whoever looks on hears of the header before it can come back. By the end of the call it may have done so,
// and the device may be closed.
MMRESULT QueueForDriver(const WaveDriverUse& driver, const Device& device, WAVEHDR* header, UINT size) {
    const auto note = [isWatched = device.Watch != nullptr, direction = device.Direction, id = device.Id,
                       header](host::HeaderEvent event) {
        if (isWatched) {
            host::NoteHeader(event, direction, id, header);
        }
    };
    note(host::HeaderEvent::Queued);
    const MMRESULT result =
        device.Send(driver, MessagesOf(device.Direction).Queue, reinterpret_cast<DWORD_PTR>(header), size);
    note(result == MMSYSERR_NOERROR ? host::HeaderEvent::Taken : host::HeaderEvent::Refused);
    return result;
}

}  // namespace front
