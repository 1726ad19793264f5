// Files played on devices, from the open devices to the last line of the summary.
#pragma once

#include <windows.h>

#include <csignal>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tools/command_error.h"
#include "tools/commands.h"
#include "tools/output_file.h"
#include "tools/progress_line.h"
#include "tools/scene.h"
#include "tools/wave_output.h"

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

class Performance {
public:
    // Opens every device and gets all memory. CommandError when something refuses. Both arguments must
    // outlive the object.
    Performance(const PlayOptions& options, Scene& scene);

    void Start();

    // Returns when every buffer is back, when nothing moves any more, when something has gone wrong,
    // or soon after `*stop` has become nonzero.
    void PlayToTheEnd(const volatile std::sig_atomic_t* stop);

    // Stops what still plays, notes what the cards did, closes the devices.
    void Close();

    // After Close. One file for each device, in their order.
    void WriteCaptures(const std::vector<std::unique_ptr<OutputFile>>& files) const;
    void PrintSummary() const;

    // The first thing that went wrong on the first device that it did on; empty when all went well.
    std::string FirstProblem() const;

private:
    // What a device did, as its card saw it.
    struct Report {
        simulator::OutputStatus Status;
        unsigned HeadersReturned;  // before the device was closed
        std::vector<simulator::Frame> Heard;
    };

    simulator::OutputStatus StatusOf(const WaveOutput& output) const;
    bool AllBack() const;
    unsigned HeadersReturned() const;
    unsigned HeadersOut() const;
    // Lets time pass until something may have come back. False when nothing moves any more.
    bool LetTimePass();
    bool LetVirtualTimePass();
    bool LetRealTimePass();
    void ShowProgress();
    void WaitForFlushedBuffers();

    const PlayOptions& options_;
    Scene& scene_;
    Event done_;  // a buffer came back on some device
    std::vector<std::unique_ptr<WaveOutput>> outputs_;
    std::vector<Report> reports_;
    ProgressLine progress_;
    uint64_t lastMovement_ = 0;  // sum of positions and headers when something last moved
    DWORD lastMovementTime_ = 0;
};

}  // namespace kestvox
