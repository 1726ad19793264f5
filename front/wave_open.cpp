// Opening a device, the mapper among them: it takes the first device that knows the format, and the first
// that it can be converted for when none does.
#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

#include <memory>
#include <utility>

#include "front/device_formats.h"
#include "front/device_query.h"
#include "front/device_table.h"
#include "front/format_mapping.h"
#include "front/header_watch.h"
#include "front/host.h"
#include "front/wave_device.h"

namespace front {

namespace {

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

MMRESULT SendOpen(const WaveDriverUse& driver, Device& device, const WaveOpenRequest& request) {
    // The driver only reads the format, but WAVEOPENDESC has a pointer without const.
    auto* format = reinterpret_cast<LPWAVEFORMAT>(const_cast<WAVEFORMATEX*>(request.Format));
    WAVEOPENDESC description = {};
    description.hWave = reinterpret_cast<HWAVE>(device.Handle);
    description.lpFormat = format;
    description.dwCallback = request.Callback;
    description.dwInstance = request.Instance;
    return driver.Send(device.Direction, device.Id, MessagesOf(device.Direction).Open,
                       reinterpret_cast<DWORD_PTR>(&device.User), reinterpret_cast<DWORD_PTR>(&description),
                       request.Flags);
}

// One open on its way.
struct Attempt {
    const WaveDriverUse& Driver;
    WaveDirection Direction;
    const WaveOpenRequest& Request;
    WaveHandle* Handle;  // stays as it is when the open fails or only asks about the format

    // `request` is what the driver would be opened with if nobody looked on.
    MMRESULT Open(Device& device, const WaveOpenRequest& request) const {
        if (!host::WatchesHeaders()) {
            return Finish(device, request, SendOpen(Driver, device, request));
        }
        device.Watch = std::make_unique<HeaderWatch>(device, request);
        return Finish(device, request, SendOpen(Driver, device, device.Watch->DriverRequest()));
    }

    MMRESULT Finish(const Device& device, const WaveOpenRequest& request, MMRESULT result) const {
        if (result != MMSYSERR_NOERROR || (Request.Flags & WAVE_FORMAT_QUERY)) {
            TheDevices().Remove(device);
        } else {
            *Handle = device.Handle;
            host::NoteOpened(Direction, device.Id, *request.Format);
        }
        if (result != MMSYSERR_NOERROR && result != WAVERR_BADFORMAT) {
            host::NoteRefused(Direction, device.Id);
        }
        return result;
    }

    MMRESULT Directly(UINT id) const {
        const std::shared_ptr<Device> device = TheDevices().Add(Direction, id);
        return Open(*device, Request);
    }

    MMRESULT Converted(UINT id, const WaveFormat& format, std::unique_ptr<Conversion> conversion) const {
        const std::shared_ptr<Device> device = TheDevices().Add(Direction, id);
        device->Mapping = std::make_unique<FormatMapping>(*device, Request, format, std::move(conversion));
        return Open(*device, device->Mapping->DriverRequest());
    }

    MMRESULT WithConversion(UINT id) const {
        const WaveFormat client(*Request.Format);
        if (client->nSamplesPerSec == 0 || client->nBlockAlign == 0) {
            return WAVERR_BADFORMAT;
        }
        for (const WaveFormat& format : DeviceFormatsFor(client)) {
            std::unique_ptr<Conversion> conversion = FindConversion(Direction, client, format);
            const MMRESULT result =
                conversion ? Converted(id, format, std::move(conversion)) : MMRESULT{WAVERR_BADFORMAT};
            if (result != WAVERR_BADFORMAT) {
                return result;
            }
        }
        return WAVERR_BADFORMAT;
    }
};

// When every device refuses, the answer is the first refusal that is not about the format: "the device is in
// use" tells a program more than that another device does not know the format.
template <typename Open>
MMRESULT OpenFirst(UINT first, UINT end, const Open& open) {
    MMRESULT refusal = end > first ? MMRESULT{WAVERR_BADFORMAT} : MMRESULT{MMSYSERR_BADDEVICEID};
    for (UINT id = first; id < end; ++id) {
        const MMRESULT result = open(id);
        if (result == MMSYSERR_NOERROR) {
            return result;
        }
        if (refusal == WAVERR_BADFORMAT) {
            refusal = result;
        }
    }
    return refusal;
}

// Of the devices from `first` to before `end`.
MMRESULT OpenMapped(const Attempt& attempt, UINT first, UINT end) {
    bool formatMatters = false;
    const MMRESULT direct = OpenFirst(first, end, [&](UINT id) {
        const MMRESULT result = attempt.Directly(id);
        formatMatters = formatMatters || result == WAVERR_BADFORMAT;
        return result;
    });
    if (direct == MMSYSERR_NOERROR || !formatMatters || (attempt.Request.Flags & WAVE_FORMAT_DIRECT)) {
        return direct;
    }
    return OpenFirst(first, end, [&](UINT id) { return attempt.WithConversion(id); });
}

}  // namespace

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
    const Attempt attempt{driver, direction, request, handle};
    if (IsMapper(request.Device)) {
        return OpenMapped(attempt, 0, count);
    }
    if (request.Device >= count) {
        return MMSYSERR_BADDEVICEID;
    }
    return request.Flags & WAVE_MAPPED ? OpenMapped(attempt, request.Device, request.Device + 1)
                                       : attempt.Directly(request.Device);
}

}  // namespace front
