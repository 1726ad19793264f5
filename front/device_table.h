// The open devices.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "front/wave_device.h"
#include "front/wave_driver.h"

namespace front {

class FormatMapping;
class HeaderWatch;

struct Device {
    WaveDirection Direction;
    UINT Id;
    WaveHandle Handle;
    DWORD_PTR User = 0;  // the driver's, from its open on
    std::atomic<bool> Closing{false};
    std::unique_ptr<FormatMapping> Mapping;  // null: the client's format is the device's
    std::unique_ptr<HeaderWatch> Watch;      // null: nobody looks on

    Device(WaveDirection direction, UINT id, WaveHandle handle);
    ~Device();

    DWORD Send(const WaveDriverUse& driver, UINT message, DWORD_PTR first = 0, DWORD_PTR second = 0) const {
        return driver.Send(Direction, Id, message, User, first, second);
    }
};

class DeviceTable {
public:
    std::shared_ptr<Device> Add(WaveDirection direction, UINT id);
    void Remove(const Device& device);
    // Null when there is none of that handle and direction.
    std::shared_ptr<Device> Find(WaveDirection direction, WaveHandle handle);
    std::vector<std::shared_ptr<Device>> All();

private:
    std::mutex lock_;
    std::map<WaveHandle, std::shared_ptr<Device>> devices_;
    WaveHandle nextHandle_ = 0x140000;  // above every device number
};

DeviceTable& TheDevices();

// What the messages of the two directions are called.
struct Messages {
    UINT DeviceCount, Caps, Open, Close, Prepare, Unprepare, Queue, Reset, Position;
};
const Messages& MessagesOf(WaveDirection direction);

UINT CountDevices(const WaveDriverUse& driver, WaveDirection direction);

// The driver's threads change a queued header's flags at any time.
DWORD FlagsOf(const WAVEHDR& header);
void SetFlags(WAVEHDR& header, DWORD flags);

// Prepares a header for the driver, or takes that back; one that has been prepared stays as it is. A driver
// that answers MMSYSERR_NOTSUPPORTED leaves it to the front.
MMRESULT PrepareForDriver(const WaveDriverUse& driver, const Device& device, WAVEHDR* header);
MMRESULT UnprepareForDriver(const WaveDriverUse& driver, const Device& device, WAVEHDR* header);

// Gives a prepared header to the driver; `size` is what the client says of it.
MMRESULT QueueForDriver(const WaveDriverUse& driver, const Device& device, WAVEHDR* header, UINT size);

}  // namespace front
