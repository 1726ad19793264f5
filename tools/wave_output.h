// One output device that plays one file: a plain client of the waveOut calls.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "tools/wav_file.h"

namespace kestvox {

// The driver's callback only counts a buffer back in and signals; all else runs on the owner's thread.
// Once buffers are prepared, a call that fails does not throw: Problem() then names the first failure.
class WaveOutput {
public:
    // Opens the device in the file's format. `done` is signalled whenever a buffer comes back.
    // CommandError when the file or the device refuses.
    WaveOutput(UINT device, const std::string& path, HANDLE done);
    // Stops and closes what is still open.
    ~WaveOutput();
    WaveOutput(const WaveOutput&) = delete;
    WaveOutput& operator=(const WaveOutput&) = delete;

    // CommandError when the device refuses.
    void SetVolume(WORD volume);
    void Pause();
    void Restart();

    // Gets all the memory that the driver will see and prepares it: `count` buffers of `milliseconds`,
    // or, for more than one pass, the whole file in buffers of that length as one loop.
    void PrepareBuffers(unsigned count, unsigned milliseconds, DWORD passes);

    // Fills and writes every free buffer, as long as there are samples left.
    void Refill();

    // Gives back the buffers that are still queued.
    void Stop();

    // Unprepares the buffers and closes the device.
    void Close();

    UINT Device() const { return device_; }
    const WAVEFORMATEX& Format() const { return file_.Format(); }
    uint64_t FrameCount() const { return file_.FrameCount() * passes_; }
    DWORD Position() const;  // frames played since the start
    unsigned HeadersReturned() const;
    unsigned HeadersOut() const;  // written and not back yet
    bool AllWritten() const { return allWritten_; }

    // The first thing that went wrong, or empty. One line, begins with the device.
    const std::string& Problem();

private:
    struct Buffer {
        WAVEHDR Header{};
        unsigned Writes = 0;
        std::atomic<unsigned> Returns = 0;
    };

    static void CALLBACK OnMessage(HWAVEOUT handle, UINT message, DWORD_PTR instance, DWORD_PTR first,
                                   DWORD_PTR second);
    std::string Failure(const char* call, MMRESULT result) const;
    void Require(const char* call, MMRESULT result) const;
    bool Check(const char* call, MMRESULT result);
    void CheckReturns();
    void NoteProblem(const std::string& problem);

    UINT device_;
    WavReader file_;
    HANDLE done_;
    HWAVEOUT handle_ = nullptr;
    DWORD passes_ = 1;
    size_t bufferBytes_ = 0;
    std::unique_ptr<char[]> memory_;
    std::unique_ptr<Buffer[]> buffers_;
    unsigned bufferCount_ = 0;
    unsigned next_ = 0;  // the buffer to fill next
    bool allWritten_ = false;
    std::string problem_;
};

}  // namespace kestvox
