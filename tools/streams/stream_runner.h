// Streams that run side by side on the cards of a scene, from their first buffer to the closed devices.
#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/command_error.h"
#include "tools/machine/scene.h"
#include "tools/streams/progress_line.h"
#include "tools/streams/progress_watch.h"
#include "tools/streams/side_work.h"
#include "tools/streams/stream_options.h"
#include "tools/streams/trace_file.h"
#include "tools/streams/wave_stream.h"

namespace kestvox {

// An auto-reset event.
class Event {
public:
    Event() : handle_(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {
        if (!handle_) {
            throw CommandError("no event can be made");
        }
    }
    ~Event() { CloseHandle(handle_); }
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;
    operator HANDLE() const { return handle_; }

private:
    HANDLE handle_;
};

class StreamRunner {
public:
    // What a stream did, as its card saw it; what passed while the computer slept counts as idle.
    struct Report {
        StreamStatus Status;
        std::optional<uint64_t> FrameCount;  // that it was to move
        uint64_t HeadersReturned;            // before the device was closed
        uint64_t HeadersUnused;  // ... that the driver gave back though the card had not moved them
    };

    // Both arguments must outlive the object.
    StreamRunner(const StreamOptions& options, Scene& scene);

    // To be signalled whenever a buffer comes back on some stream.
    HANDLE BufferBack() const { return bufferBack_; }

    // Takes in an open stream with its buffers prepared. Streams start in the order they were added.
    void Add(std::unique_ptr<WaveStream> stream);

    // Goes on with that, too, from here to the end of Close. It outlives this.
    void Add(SideWork& work) { sideWork_.push_back(&work); }
    // The same, of what is gone with this.
    void Add(std::unique_ptr<SideWork> work);

    // Tells the trace of the headers of the streams that are added from now on. It outlives this.
    void SendHeadersTo(TraceFile& trace) { trace_ = &trace; }

    // With a pause after each stream but the last.
    void Start(DWORD pauseMilliseconds = 0);

    // Returns when every stream is finished, when one stands still or does not end, when something has gone
    // wrong, or soon after the user has interrupted. On the way the computer sleeps once, if it shall. A
    // stream that neither ends by itself nor has a count of frames is not waited for.
    void RunToTheEnd();

    // Stops what still runs, notes what the cards did, closes the devices.
    void Close();

    // After Close, in the order of Add.
    const std::vector<Report>& Reports() const { return reports_; }

    // The first thing that went wrong on the first stream or side work that it did on; empty when all went
    // well.
    std::string FirstProblem() const;

private:
    StreamStatus StatusOf(size_t stream) const;
    bool AllFinished() const;
    unsigned HeadersOut() const;
    bool SleepIsDue() const;
    void SleepAndWake();
    // Microseconds to the end of a stream or to the sleep, whichever comes first.
    std::optional<int64_t> TimeToNextMark() const;
    void Pause(DWORD milliseconds);
    void LetTimePass();
    void DoSideWork();
    bool StillMoves();
    StreamProgress ProgressOf(size_t stream) const;
    std::string DescribeStandstill(const ProgressWatch::Finding& finding) const;
    uint64_t HeadersUnused(size_t stream) const;
    void ShowProgress();
    void WaitForFlushedBuffers();

    const StreamOptions& options_;
    Scene& scene_;
    const bool stepped_;
    Event bufferBack_;
    std::vector<std::unique_ptr<WaveStream>> streams_;
    std::vector<StreamStatus> beforeSleep_;  // one for each stream
    std::vector<Report> reports_;
    ProgressLine progress_;
    std::vector<std::unique_ptr<SideWork>> ownWork_;
    std::vector<SideWork*> sideWork_;
    TraceFile* trace_ = nullptr;  // null: there is none
    ProgressWatch watch_;
    bool slept_ = false;
    std::string standstill_;  // what stands still, or empty
};

}  // namespace kestvox
