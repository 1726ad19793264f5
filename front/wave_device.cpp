#include "front/wave_device.h"

#include <mmddk.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "front/host.h"
#include "front/installable_driver.h"
#include "front/unload_driver.h"

namespace front {

namespace {

struct Messages {
    UINT DeviceCount, Caps, Open, Close, Prepare, Unprepare, Queue, Reset, Position;
};
constexpr Messages MessageTable[] = {
    {WODM_GETNUMDEVS, WODM_GETDEVCAPS, WODM_OPEN, WODM_CLOSE, WODM_PREPARE, WODM_UNPREPARE, WODM_WRITE,
     WODM_RESET, WODM_GETPOS},
    {WIDM_GETNUMDEVS, WIDM_GETDEVCAPS, WIDM_OPEN, WIDM_CLOSE, WIDM_PREPARE, WIDM_UNPREPARE, WIDM_ADDBUFFER,
     WIDM_RESET, WIDM_GETPOS},
};

const Messages& MessagesOf(WaveDirection direction) {
    return MessageTable[static_cast<int>(direction)];
}

struct Device {
    WaveDirection Direction;
    UINT Id;
    WaveHandle Handle;
    DWORD_PTR User = 0;  // the driver's, from its open on
    std::atomic<bool> Closing{false};

    DWORD Send(const WaveDriverUse& driver, UINT message, DWORD_PTR first, DWORD_PTR second) const {
        return driver.Send(Direction, Id, message, User, first, second);
    }
};

// The open devices.
class DeviceTable {
public:
    std::shared_ptr<Device> Add(WaveDirection direction, UINT id) {
        const std::lock_guard hold(lock_);
        auto device = std::make_shared<Device>();
        device->Direction = direction;
        device->Id = id;
        device->Handle = nextHandle_;
        nextHandle_ += 0x10;
        devices_[device->Handle] = device;
        return device;
    }

    void Remove(const Device& device) {
        const std::lock_guard hold(lock_);
        devices_.erase(device.Handle);
    }

    std::shared_ptr<Device> Find(WaveDirection direction, WaveHandle handle) {
        const std::lock_guard hold(lock_);
        const auto found = devices_.find(handle);
        if (found == devices_.end() || found->second->Direction != direction) {
            return nullptr;
        }
        return found->second;
    }

    std::vector<std::shared_ptr<Device>> All() {
        const std::lock_guard hold(lock_);
        std::vector<std::shared_ptr<Device>> all;
        for (const auto& [handle, device] : devices_) {
            all.push_back(device);
        }
        return all;
    }

private:
    std::mutex lock_;
    std::map<WaveHandle, std::shared_ptr<Device>> devices_;
    WaveHandle nextHandle_ = 0x140000;  // above every device number
};

DeviceTable& TheDevices() {
    static auto* const devices = new DeviceTable;
    return *devices;
}

UINT CountDevices(const WaveDriverUse& driver, WaveDirection direction) {
    const UINT message = MessagesOf(direction).DeviceCount;
    return driver.Serves(direction) ? driver.Send(direction, 0, message, 0, 0, 0) : 0;
}

MMRESULT CheckOpenFlags(const WaveOpenRequest& request) {
    constexpr DWORD Known =
        CALLBACK_TYPEMASK | WAVE_FORMAT_QUERY | WAVE_ALLOWSYNC | WAVE_MAPPED | WAVE_FORMAT_DIRECT;
    if (request.Flags & ~Known) {
        return MMSYSERR_INVALFLAG;
    }
    bool valid = true;
    switch (request.Flags & CALLBACK_TYPEMASK) {
    case CALLBACK_NULL:
    case CALLBACK_THREAD:
        break;
    case CALLBACK_WINDOW:
        valid = IsWindow(reinterpret_cast<HWND>(request.Callback));
        break;
    case CALLBACK_FUNCTION:
        valid = request.Callback != 0;
        break;
    case CALLBACK_EVENT:
        valid = host::IsEvent(reinterpret_cast<HANDLE>(request.Callback));
        break;
    default:
        return MMSYSERR_INVALFLAG;
    }
    return valid ? MMSYSERR_NOERROR : MMSYSERR_INVALPARAM;
}

// `*handle` stays as it is when the open fails or only asks about the format.
MMRESULT OpenDevice(const WaveDriverUse& driver, WaveDirection direction, UINT id,
                    const WaveOpenRequest& request, WaveHandle* handle) {
    const std::shared_ptr<Device> device = TheDevices().Add(direction, id);
    // The driver only reads the format, but WAVEOPENDESC has a pointer without const.
    auto* format = reinterpret_cast<LPWAVEFORMAT>(const_cast<WAVEFORMATEX*>(request.Format));
    WAVEOPENDESC description = {};
    description.hWave = reinterpret_cast<HWAVE>(device->Handle);
    description.lpFormat = format;
    description.dwCallback = request.Callback;
    description.dwInstance = request.Instance;
    const MMRESULT result =
        driver.Send(direction, id, MessagesOf(direction).Open, reinterpret_cast<DWORD_PTR>(&device->User),
                    reinterpret_cast<DWORD_PTR>(&description), request.Flags);
    if (result != MMSYSERR_NOERROR || (request.Flags & WAVE_FORMAT_QUERY)) {
        TheDevices().Remove(*device);
    } else {
        *handle = device->Handle;
    }
    return result;
}

// When every device refuses, the answer is the first refusal that is not about the format: "the device is in
// use" tells a program more than that another device does not know the format.
MMRESULT OpenAnyDevice(const WaveDriverUse& driver, WaveDirection direction, UINT count,
                       const WaveOpenRequest& request, WaveHandle* handle) {
    MMRESULT refusal = count > 0 ? MMRESULT{WAVERR_BADFORMAT} : MMRESULT{MMSYSERR_BADDEVICEID};
    for (UINT id = 0; id < count; ++id) {
        const MMRESULT result = OpenDevice(driver, direction, id, request, handle);
        if (result == MMSYSERR_NOERROR) {
            return result;
        }
        if (refusal == WAVERR_BADFORMAT) {
            refusal = result;
        }
    }
    return refusal;
}

// The driver's threads change a queued header's flags at any time.
DWORD FlagsOf(const WAVEHDR& header) {
    return __atomic_load_n(&header.dwFlags, __ATOMIC_ACQUIRE);
}

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
    const WaveHandle id = open ? open->Id : device;
    if (id >= CountDevices(driver, direction)) {
        return MMSYSERR_BADDEVICEID;
    }
    // Drivers fill the whole structure, whatever room the caller has.
    std::vector<BYTE> whole(capsSize);
    const MMRESULT result = driver.Send(direction, static_cast<UINT>(id), MessagesOf(direction).Caps, 0,
                                        reinterpret_cast<DWORD_PTR>(whole.data()), capsSize);
    if (result == MMSYSERR_NOERROR) {
        std::memcpy(caps, whole.data(), std::min(size, capsSize));
    }
    return result;
}

MMRESULT OpenWave(WaveDirection direction, const WaveOpenRequest& request, WaveHandle* handle) {
    const MMRESULT error = CheckOpenFlags(request);
    if (error != MMSYSERR_NOERROR) {
        return error;
    }
    if (!request.Format) {
        return MMSYSERR_INVALPARAM;
    }
    const WaveDriverUse driver;
    const UINT count = CountDevices(driver, direction);
    if (request.Device == WAVE_MAPPER) {
        return OpenAnyDevice(driver, direction, count, request, handle);
    }
    if (request.Device >= count) {
        return MMSYSERR_BADDEVICEID;
    }
    return OpenDevice(driver, direction, request.Device, request, handle);
}

MMRESULT CloseWave(WaveDirection direction, WaveHandle handle) {
    const WaveDriverUse driver;
    const std::shared_ptr<Device> device = TheDevices().Find(direction, handle);
    // Of two closes at a time only one may reach the driver, whose instance is gone after it.
    if (!device || device->Closing.exchange(true)) {
        return MMSYSERR_INVALHANDLE;
    }
    const MMRESULT result = device->Send(driver, MessagesOf(direction).Close, 0, 0);
    if (result == MMSYSERR_NOERROR) {
        TheDevices().Remove(*device);
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
    MMRESULT result =
        SendWave(direction, handle, MessagesOf(direction).Prepare, reinterpret_cast<DWORD_PTR>(header), size);
    if (result == MMSYSERR_NOTSUPPORTED) {
        header->dwFlags |= WHDR_PREPARED;
        result = MMSYSERR_NOERROR;
    }
    return result;
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
    MMRESULT result = SendWave(direction, handle, MessagesOf(direction).Unprepare,
                               reinterpret_cast<DWORD_PTR>(header), size);
    if (result == MMSYSERR_NOTSUPPORTED) {
        header->dwFlags &= ~DWORD{WHDR_PREPARED};
        result = MMSYSERR_NOERROR;
    }
    return result;
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
    return SendWave(direction, handle, MessagesOf(direction).Queue, reinterpret_cast<DWORD_PTR>(header),
                    size);
}

MMRESULT GetWavePosition(WaveDirection direction, WaveHandle handle, MMTIME* time, UINT size) {
    if (!TheDevices().Find(direction, handle)) {
        return MMSYSERR_INVALHANDLE;
    }
    if (!time || size < sizeof(MMTIME)) {
        return MMSYSERR_INVALPARAM;
    }
    return SendWave(direction, handle, MessagesOf(direction).Position, reinterpret_cast<DWORD_PTR>(time),
                    size);
}

MMRESULT SendWave(WaveDirection direction, WaveHandle handle, UINT message, DWORD_PTR first,
                  DWORD_PTR second) {
    const WaveDriverUse driver;
    const std::shared_ptr<Device> device = TheDevices().Find(direction, handle);
    return device ? device->Send(driver, message, first, second) : MMRESULT{MMSYSERR_INVALHANDLE};
}

MMRESULT SendWaveOrId(WaveDirection direction, WaveHandle device, UINT message, DWORD_PTR first,
                      DWORD_PTR second) {
    const WaveDriverUse driver;
    const std::shared_ptr<Device> open = TheDevices().Find(direction, device);
    if (open) {
        return open->Send(driver, message, first, second);
    }
    if (device >= CountDevices(driver, direction)) {
        return MMSYSERR_INVALHANDLE;
    }
    return driver.Send(direction, static_cast<UINT>(device), message, 0, first, second);
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
