// A client of one wave output device: owns its buffers and counts what comes back.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "tests/support/wave_formats.h"

class WavePlayer {
public:
    WavePlayer() = default;
    ~WavePlayer() { Shut(); }
    WavePlayer(const WavePlayer&) = delete;
    WavePlayer& operator=(const WavePlayer&) = delete;

    MMRESULT Open(UINT device, const WaveFormat& format);
    MMRESULT Close();
    void Shut();    // resets and closes, when it is open
    void Forget();  // headers, counts and messages; while it is closed
    HWAVEOUT Handle() const { return handle_; }

    // Writes a prepared header with a copy of the data at `misalignment` bytes from an 8-byte boundary.
    // The header stays with the player until it is gone.
    MMRESULT Write(const std::vector<BYTE>& data, DWORD flags = 0, DWORD loops = 0,
                   unsigned misalignment = 0);
    WAVEHDR& Header(size_t index) { return buffers_[index]->Header; }
    size_t HeaderCount() const { return buffers_.size(); }

    // Called from inside every WOM_DONE, on the driver's thread.
    void OnDone(std::function<void(WAVEHDR&)> action) { onDone_ = std::move(action); }

    unsigned DoneCount(size_t index);  // WOM_DONE messages for that header
    unsigned DoneCount();              // for all of them
    std::vector<size_t> DoneOrder();   // indexes of the headers in order of return
    std::vector<UINT> Messages();      // every message of the device in order

    DWORD Position(UINT type = TIME_SAMPLES);

private:
    struct Buffer {
        WAVEHDR Header;
        std::vector<BYTE> Data;
        unsigned Done;
    };
    static void CALLBACK Callback(HWAVEOUT handle, UINT message, DWORD_PTR instance, DWORD_PTR param1,
                                  DWORD_PTR param2);
    void Receive(UINT message, WAVEHDR* header);

    HWAVEOUT handle_ = nullptr;
    std::function<void(WAVEHDR&)> onDone_;
    std::mutex mutex_;  // guards what follows, which the callback changes
    std::vector<std::unique_ptr<Buffer>> buffers_;
    std::vector<size_t> doneOrder_;
    std::vector<UINT> messages_;
};

// `count` bytes of a recognisable pattern that does not repeat within a buffer.
std::vector<BYTE> Pattern(size_t count, unsigned seed = 1);
