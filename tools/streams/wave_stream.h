// One open wave device and the buffers that go round between it and the program: what playing and
// recording have in common.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "simulator/simulator.h"
#include "tools/streams/accepted_formats.h"

namespace kestvox {

inline uint64_t RoundUp(uint64_t value, uint64_t unit) {
    return (value + unit - 1) / unit * unit;
}

// What a card did for a stream, whichever way it goes.
struct StreamStatus {
    std::optional<uint64_t> StartFrame;  // count of the group's clock; nothing: never started
    uint64_t Frames = 0;                 // moved between buffers and the card
    uint64_t IdleFrames = 0;             // that passed without a buffer
    simulator::Gaps Gaps;                // ... where
    unsigned BuffersInFlight = 0;
    unsigned MostInFlight = 0;
    uint64_t BuffersMoved = 0;  // to their end
};

// The driver's callback only counts a buffer back in and signals; all else runs on the owner's thread.
// Once buffers are prepared, a call that fails does not throw: Problem() then names the first failure.
class WaveStream {
public:
    virtual ~WaveStream() = default;
    WaveStream(const WaveStream&) = delete;
    WaveStream& operator=(const WaveStream&) = delete;

    UINT Device() const { return device_; }
    // Each card has an analog and a digital device.
    unsigned Card() const { return device_ / 2; }
    simulator::Port Port() const { return device_ % 2 ? simulator::Port::Digital : simulator::Port::Analog; }
    virtual uint32_t Channel() const = 0;  // of the card, as the requests count them
    virtual const WAVEFORMATEX& Format() const = 0;

    // Frames that the stream is to move; nothing: as many as come.
    virtual std::optional<uint64_t> FrameCount() const = 0;
    // Whether it has to be stopped when it has moved them, as it does not end by itself.
    virtual bool EndsByCount() const = 0;
    // Whether there is nothing more to wait for when it has moved so many frames.
    virtual bool IsFinished(uint64_t frames) const = 0;
    // Headers that the driver gave back of itself though the card had not moved anything of them; `moved` is
    // how many buffers it did move to their end.
    virtual uint64_t HeadersUnused(uint64_t moved) const = 0;
    // Everything there is has been handed over and is back.
    virtual bool AllBack() const = 0;

    // Queues the first buffers. With `together` nothing moves before Start.
    virtual void QueueFirst(bool together) = 0;
    virtual void Start(bool together) = 0;
    // Takes every buffer that is back and hands it over again, as long as there is need of it.
    virtual void Refill() = 0;
    // Ends the stream: the driver gives back the buffers that it still has.
    virtual void Stop() = 0;
    // Takes what has come back, unprepares the buffers and closes the device.
    void Close();

    virtual StreamStatus Status(const simulator::Simulator& cards) const = 0;
    // What can be known of it without the card: how far it is, and what it has of the buffers.
    StreamStatus StatusByPosition() const;
    uint64_t HeadersReturned() const;
    unsigned HeadersOut() const;  // handed over and not back yet

    // From now on, the loudest sample handed over since the last TakeLevel: decibels, 0 is full scale.
    // Nothing for silence, and where the samples are no plain numbers.
    void WatchLevel() { watchesLevel_ = true; }
    std::optional<double> TakeLevel();

    // Is given the bytes of each buffer on the owner's thread: before it is handed over to be played, or as
    // it comes back recorded.
    using SampleSink = std::function<void(std::span<const char>)>;
    void SendSamples(SampleSink sink) { sampleSink_ = std::move(sink); }

    // Is told of each header, on the thread that hands it over or on the driver's.
    using HeaderSink = std::function<void(simulator::HeaderEvent::Kind, const WAVEHDR&)>;
    void SendHeaders(HeaderSink sink) { headerSink_ = std::move(sink); }

    // The first thing that went wrong, or empty. One line, begins with the device.
    const std::string& Problem();

protected:
    struct Buffer {
        WAVEHDR Header{};
        uint64_t Writes = 0;
        std::atomic<uint64_t> Returns = 0;
        bool IsBack() const { return Returns.load(std::memory_order_acquire) == Writes; }
    };

    // `calls` begins the names of the system's calls: "waveOut" or "waveIn". `done` is signalled whenever a
    // buffer comes back.
    WaveStream(UINT device, const char* calls, HANDLE done) : device_(device), calls_(calls), done_(done) {}

    virtual MMRESULT PrepareHeader(WAVEHDR& header) = 0;
    virtual MMRESULT UnprepareHeader(WAVEHDR& header) = 0;
    virtual MMRESULT HandOver(WAVEHDR& header) = 0;
    virtual MMRESULT CloseDevice() = 0;
    virtual MMRESULT GetPosition(MMTIME& time) const = 0;
    virtual void TakeRest() {}

    // What passes in that time; at least one.
    uint64_t FramesIn(unsigned milliseconds) const;

    // Gets all the memory that the driver will see and prepares it. CommandError when that is refused.
    void AllocateBuffers(unsigned count, size_t bytes);
    unsigned BufferCount() const { return bufferCount_; }
    size_t BufferBytes() const { return bufferBytes_; }
    Buffer& BufferAt(unsigned index) { return buffers_[index % bufferCount_]; }
    const Buffer& BufferAt(unsigned index) const { return buffers_[index % bufferCount_]; }

    // Hands the buffer to the driver; false when that failed.
    bool QueueBuffer(const char* call, Buffer& buffer);
    // On a thread of the driver.
    void CountBack(DWORD_PTR header);

    // `what` begins what is said of the format.
    [[noreturn]] void RefuseOpen(MMRESULT result, const std::string& what,
                                 const FormatQueries& queries) const;
    void Require(const char* call, MMRESULT result) const;  // CommandError
    bool Check(const char* call, MMRESULT result);
    void NoteSamples(std::span<const char> samples);
    void CheckReturns();
    void NoteProblem(const std::string& problem);

private:
    void NoteLevel(std::span<const char> samples);
    void NoteHeader(simulator::HeaderEvent::Kind what, const WAVEHDR& header) const;
    std::string Failure(const char* call, MMRESULT result) const;

    UINT device_;
    const char* calls_;
    HANDLE done_;
    size_t bufferBytes_ = 0;
    std::unique_ptr<char[]> memory_;
    std::unique_ptr<Buffer[]> buffers_;
    unsigned bufferCount_ = 0;
    std::string problem_;
    SampleSink sampleSink_;
    HeaderSink headerSink_;
    bool watchesLevel_ = false;
    double peak_ = 0;  // 1 is full scale
};

}  // namespace kestvox
