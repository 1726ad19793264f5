#include "report/wave_summary.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "report/json_text.h"
#include "report/samples.h"

namespace kestvox {
namespace {

using simulator::Frame;

std::string Tenths(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", value);
    return text;
}

// Sixteen bits are finer than a picture.
std::string Bounds(const SampleRange& range) {
    return range.IsEmpty()
               ? "null"
               : "[" + std::to_string(range.Least >> 16) + "," + std::to_string(range.Most >> 16) + "]";
}

// The root mean square of one side.
std::string Level(const WaveColumn& column, size_t side) {
    const double mean = column.FramesCame ? column.Squares[side] / static_cast<double>(column.FramesCame) : 0;
    return mean > 0 ? Tenths(10 * std::log10(mean)) : "null";
}

void AddTo(std::array<SampleRange, 2>& sides, const Frame& frame) {
    sides[0].Add(frame.Left);
    sides[1].Add(frame.Right);
}

}  // namespace

void SampleRange::Add(int32_t sample) {
    Least = std::min(Least, sample);
    Most = std::max(Most, sample);
}

void SampleRange::Merge(const SampleRange& other) {
    Least = std::min(Least, other.Least);
    Most = std::max(Most, other.Most);
}

void WaveColumn::Merge(const WaveColumn& next) {
    for (size_t side = 0; side < 2; ++side) {
        Asked[side].Merge(next.Asked[side]);
        Came[side].Merge(next.Came[side]);
        Squares[side] += next.Squares[side];
    }
    FramesCame += next.FramesCame;
    Differences += next.Differences;
}

void WaveSummary::AddCame(uint64_t position, std::span<const Frame> came) {
    Add(position, {}, came, false);
}

void WaveSummary::AddPair(uint64_t position, std::span<const Frame> asked, std::span<const Frame> came) {
    Add(position, asked, came, true);
}

void WaveSummary::AddMissing(uint64_t position, std::span<const Frame> asked) {
    Add(position, asked, {}, true);
}

void WaveSummary::AddUnasked(uint64_t position, std::span<const Frame> came) {
    Add(position, {}, came, true);
}

void WaveSummary::Add(uint64_t position, std::span<const Frame> asked, std::span<const Frame> came,
                      bool compare) {
    askedSpectrum_.Add(asked);
    cameSpectrum_.Add(came);
    const size_t count = std::max(asked.size(), came.size());
    size_t same = count;  // frames before the first that differs
    for (size_t at = 0; at < count;) {
        WaveColumn& column = columns_.At(position + at);
        const auto end = static_cast<size_t>(std::min<uint64_t>(count, at + columns_.RoomAt(position + at)));
        for (; at < end; ++at) {
            if (!asked.empty()) {
                AddTo(column.Asked, asked[at]);
            }
            if (!came.empty()) {
                AddTo(column.Came, came[at]);
                column.Squares[0] += std::pow(came[at].Left / FullScale, 2);
                column.Squares[1] += std::pow(came[at].Right / FullScale, 2);
                ++column.FramesCame;
            }
            if (compare && (asked.empty() || came.empty() || asked[at] != came[at])) {
                NoteDifference(column, position + at);
                same = std::min(same, at);
            }
        }
    }
    if (compare) {
        closeUp_.Add(position, asked, came, same);
    }
}

void WaveSummary::NoteDifference(WaveColumn& column, uint64_t position) {
    ++column.Differences;
    ++differences_;
    firstDifference_ = std::min(firstDifference_.value_or(position), position);
}

std::string WaveSummary::Json(unsigned channels, bool compared) const {
    const std::vector<WaveColumn>& columns = columns_.All();
    const auto list = [&](auto show) { return JsonList(columns, show); };
    const auto sides = [&](auto showSide) {
        std::string text;
        for (size_t side = 0; side < channels; ++side) {
            text += (side == 0 ? "" : ",\n") +
                    list([&](const WaveColumn& column) { return showSide(column, side); });
        }
        return "[" + text + "]";
    };
    const auto spectrum = [](const Spectrum& of) { return JsonList(of.Decibels(), Tenths); };
    std::string text = "{\"frames-per-column\": " + std::to_string(columns_.Width());
    text += ", \"compared\": " + std::string(compared ? "true" : "false");
    text += ", \"differences\": " + std::to_string(compared ? differences_ : 0);
    text += ", \"first-difference\": " +
            (compared && firstDifference_ ? std::to_string(*firstDifference_) : "null");
    text += ",\n\"asked\": " +
            sides([](const WaveColumn& column, size_t side) { return Bounds(column.Asked[side]); });
    text += ",\n\"came\": " +
            sides([](const WaveColumn& column, size_t side) { return Bounds(column.Came[side]); });
    text += ",\n\"level\": " + sides(Level);
    text += ",\n\"different\": " +
            list([&](const WaveColumn& column) { return std::to_string(compared ? column.Differences : 0); });
    text += ",\n\"close-up\": " + (compared ? closeUp_.Json(channels) : "null");
    text += ",\n\"asked-spectrum\": " + spectrum(askedSpectrum_);
    text += ",\n\"came-spectrum\": " + spectrum(cameSpectrum_);
    return text + "}";
}

}  // namespace kestvox
