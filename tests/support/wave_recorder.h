// A client of one wave input device: owns its buffers, counts what comes back and keeps what was recorded.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "tests/support/wave_formats.h"

class WaveRecorder {
public:
    WaveRecorder() = default;
    ~WaveRecorder() { Shut(); }
    WaveRecorder(const WaveRecorder&) = delete;
    WaveRecorder& operator=(const WaveRecorder&) = delete;

    MMRESULT Open(UINT device, const WaveFormat& format);
    MMRESULT Close();
    void Shut();    // resets and closes, when it is open
    void Forget();  // headers, counts and messages; while it is closed
    HWAVEIN Handle() const { return handle_; }

    // Adds a prepared header with an untouched buffer of `size` bytes at `misalignment` bytes from an
    // 8-byte boundary. The header stays with the recorder until it is gone.
    MMRESULT Add(size_t size, unsigned misalignment = 0);
    MMRESULT AddAgain(WAVEHDR& header) { return waveInAddBuffer(handle_, &header, sizeof header); }
    MMRESULT Start() { return waveInStart(handle_); }
    MMRESULT Stop() { return waveInStop(handle_); }
    MMRESULT Reset() { return waveInReset(handle_); }

    WAVEHDR& Header(size_t index) { return buffers_[index]->Header; }
    size_t HeaderCount() const { return buffers_.size(); }

    // Called from inside every WIM_DATA, on the driver's thread.
    void OnDone(std::function<void(WAVEHDR&)> action) { onDone_ = std::move(action); }

    unsigned DoneCount(size_t index);  // WIM_DATA messages for that header
    unsigned DoneCount();              // for all of them
    std::vector<size_t> DoneOrder();   // indexes of the headers in order of return
    std::vector<UINT> Messages();      // every message of the device in order

    // What came back, one buffer after the other: dwBytesRecorded of each, and the bytes themselves as
    // they were when it came back.
    std::vector<DWORD> Counts();
    std::vector<BYTE> Recorded();
    bool GuardsIntact();  // nothing was written outside a buffer

    DWORD Position(UINT type = TIME_SAMPLES);

private:
    struct Buffer {
        WAVEHDR Header;
        std::vector<BYTE> Memory;
        unsigned Done;
    };
    static void CALLBACK Callback(HWAVEIN handle, UINT message, DWORD_PTR instance, DWORD_PTR param1,
                                  DWORD_PTR param2);
    void Receive(UINT message, WAVEHDR* header);

    HWAVEIN handle_ = nullptr;
    std::function<void(WAVEHDR&)> onDone_;
    std::mutex mutex_;  // guards what follows, which the callback changes
    std::vector<std::unique_ptr<Buffer>> buffers_;
    std::vector<size_t> doneOrder_;
    std::vector<DWORD> counts_;
    std::vector<BYTE> recorded_;
    std::vector<UINT> messages_;
};
