// What is kept of a stream's sound for a picture of it: what was asked for and what came, side by side.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>

#include "report/bounded_columns.h"
#include "report/close_up.h"
#include "report/spectrum.h"
#include "simulator/channels/frame.h"

namespace kestvox {

// Samples at the top of 32 bits.
struct SampleRange {
    int32_t Least = std::numeric_limits<int32_t>::max();
    int32_t Most = std::numeric_limits<int32_t>::min();

    bool IsEmpty() const { return Least > Most; }
    void Add(int32_t sample);
    void Merge(const SampleRange& other);
};

struct WaveColumn {
    std::array<SampleRange, 2> Asked;  // left, right
    std::array<SampleRange, 2> Came;
    std::array<double, 2> Squares{};  // sums, of what came; 1 is full scale
    uint64_t FramesCame = 0;
    uint64_t Differences = 0;  // frames

    void Merge(const WaveColumn& next);
};

class WaveSummary {
public:
    // Keeps at most `columns` columns, which is at least two.
    explicit WaveSummary(size_t columns) : columns_(columns) {}

    // Frames that came and had nothing to be compared with.
    void AddCame(uint64_t position, std::span<const simulator::Frame> came);
    // As many frames as were asked for came. Those that are not the same on both sides are differences.
    void AddPair(uint64_t position, std::span<const simulator::Frame> asked,
                 std::span<const simulator::Frame> came);
    // Frames of which only one came to be; all are differences.
    void AddMissing(uint64_t position, std::span<const simulator::Frame> asked);
    void AddUnasked(uint64_t position, std::span<const simulator::Frame> came);

    uint64_t Differences() const { return differences_; }  // frames

    void ReduceTo(size_t columns) { columns_.ReduceTo(columns); }

    // A JSON object; `channels` is 1 or 2, `compared` whether there was something to compare with.
    std::string Json(unsigned channels, bool compared) const;

private:
    void Add(uint64_t position, std::span<const simulator::Frame> asked,
             std::span<const simulator::Frame> came, bool compare);
    void NoteDifference(WaveColumn& column, uint64_t position);

    BoundedColumns<WaveColumn> columns_;
    CloseUp closeUp_;
    Spectrum askedSpectrum_;
    Spectrum cameSpectrum_;
    uint64_t differences_ = 0;
    std::optional<uint64_t> firstDifference_;
};

}  // namespace kestvox
