// An open device whose client uses a format that the device does not take: each of the client's headers goes
// to the driver as a header of ours, with the data converted, and comes back with it.
//
// Playing, the data is converted in the call that writes it; recording, in the driver's callback. What does
// not make a whole block waits for the next header. The lock guards the headers and the conversion. It is
// never held while the driver or the client runs.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "front/conversion.h"
#include "front/device_table.h"
#include "front/wave_format.h"

namespace front {

class FormatMapping {
public:
    // `request` is the client's. The conversion goes from its format to the device's, or back.
    FormatMapping(const Device& device, const WaveOpenRequest& request, WaveFormat deviceFormat,
                  std::unique_ptr<Conversion> conversion);

    // What the driver is opened with: it calls back here.
    WaveOpenRequest DriverRequest() const;

    MMRESULT Prepare(WAVEHDR* header);
    MMRESULT Unprepare(const WaveDriverUse& driver, WAVEHDR* header);
    MMRESULT Queue(const WaveDriverUse& driver, WAVEHDR* header);

    // In the client's format, as TIME_MS, TIME_SAMPLES or TIME_BYTES; anything else becomes bytes.
    MMRESULT Position(const WaveDriverUse& driver, MMTIME* time) const;

    // Comes before a reset: what waits for the rest of its block never gets it.
    void Forget();

private:
    struct Buffer {
        WAVEHDR Header = {};  // the driver's
        std::vector<BYTE> Data;
        WAVEHDR* Outer = nullptr;  // the client's
    };

    static void CALLBACK DriverCalls(HDRVR, DWORD message, DWORD_PTR mapping, DWORD_PTR first,
                                     DWORD_PTR second);
    void TellClient(DWORD message, DWORD_PTR first, DWORD_PTR second) const;
    void GiveBack(Buffer& buffer, DWORD message);
    Buffer& BufferOf(WAVEHDR* header);
    void TakeIn(Buffer& buffer);
    void FillFrom(Buffer& buffer);
    MMRESULT Send(const WaveDriverUse& driver, Buffer& buffer);
    MMRESULT HandOver(const WaveDriverUse& driver, std::unique_lock<std::mutex>& hold, const Buffer& own);

    const Device& device_;
    const WaveFormat clientFormat_;
    const WaveFormat deviceFormat_;
    const WaveOpenRequest client_;

    std::mutex lock_;
    std::unique_ptr<Conversion> conversion_;
    bool begins_ = true;
    std::vector<BYTE> rest_;     // not yet converted
    std::vector<BYTE> surplus_;  // recorded and converted, for the next header
    std::map<WAVEHDR*, std::unique_ptr<Buffer>> buffers_;
    std::deque<Buffer*> waiting_;  // to be handed to the driver in this order
    bool handingOver_ = false;     // a thread does that at the moment
};

}  // namespace front
