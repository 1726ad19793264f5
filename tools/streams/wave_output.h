// One output device that plays one file: a plain client of the waveOut calls.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <cstdint>
#include <string>

#include "tools/files/wav_reader.h"
#include "tools/streams/wave_stream.h"

namespace kestvox {

class WaveOutput final : public WaveStream {
public:
    // Opens the device in the file's format. CommandError when the device refuses.
    WaveOutput(UINT device, WavReader file, HANDLE done);
    // Stops and closes what is still open.
    ~WaveOutput() override;

    // CommandError when the device refuses.
    void SetVolume(WORD volume);

    // `count` buffers of `milliseconds`, or, for more than one pass, the whole file in buffers of that
    // length as one loop. CommandError for a loop of a file whose length is not known.
    void PrepareBuffers(unsigned count, unsigned milliseconds, DWORD passes);

    uint32_t Channel() const override { return simulator::OutputChannel(Port()); }
    const WAVEFORMATEX& Format() const override { return file_.Format(); }
    std::optional<uint64_t> FrameCount() const override;
    bool EndsByCount() const override { return false; }
    bool IsFinished(uint64_t) const override { return AllBack(); }
    uint64_t HeadersUnused(uint64_t moved) const override;
    bool AllBack() const override { return allWritten_ && HeadersOut() == 0; }
    void QueueFirst(bool together) override;
    void Start(bool together) override;
    void Refill() override;
    void Stop() override;
    StreamStatus Status(const simulator::Simulator& cards) const override;

private:
    static void CALLBACK OnMessage(HWAVEOUT handle, UINT message, DWORD_PTR instance, DWORD_PTR first,
                                   DWORD_PTR second);
    bool Fill(Buffer& buffer);
    MMRESULT PrepareHeader(WAVEHDR& header) override;
    MMRESULT UnprepareHeader(WAVEHDR& header) override;
    MMRESULT HandOver(WAVEHDR& header) override;
    MMRESULT CloseDevice() override;
    MMRESULT GetPosition(MMTIME& time) const override;

    WavReader file_;
    HWAVEOUT handle_ = nullptr;
    DWORD passes_ = 1;
    unsigned next_ = 0;  // the buffer to fill next
    bool allWritten_ = false;
};

}  // namespace kestvox
