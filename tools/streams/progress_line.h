// How far the streams are, on one line of the terminal that is written over again and again.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace kestvox {

struct Progress {
    double Seconds = 0;  // of sound
    std::optional<double> TotalSeconds;
    unsigned BuffersInFlight = 0;
    std::optional<double> Decibels;  // the loudest sample lately, below full scale
};

// The line for a terminal of that width: position, speed as a multiple of real time, time left, buffers in
// flight, level; the last of them are left out where there is no room.
std::string ProgressText(const Progress& progress, double elapsedSeconds, unsigned width);

// Silent unless standard error is a terminal.
class ProgressLine {
public:
    explicit ProgressLine(bool wanted);
    ~ProgressLine() { Wipe(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    // Whether it is time to show the line again; false when it is not shown at all.
    bool IsDue() const;
    void Show(const Progress& progress);

    // Leaves the line as it was before the first Show.
    void Wipe();

private:
    using Time = std::chrono::steady_clock::time_point;
    const bool wanted_;
    const Time begun_ = std::chrono::steady_clock::now();
    std::optional<Time> shown_;
    size_t columns_ = 0;  // that are written on
};

}  // namespace kestvox
