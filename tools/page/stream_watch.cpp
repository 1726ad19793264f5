#include "tools/page/stream_watch.h"

#include <utility>

#include "tools/files/samples.h"
#include "tools/files/wave_format.h"
#include "tools/system/json_text.h"

namespace kestvox {
namespace {

using simulator::Frame;

constexpr size_t WaveColumns = 2000;
constexpr size_t TimeColumns = 1000;

}  // namespace

StreamWatch::StreamWatch(WaveStream& stream, Scene& scene, const char* kind, bool compares)
    : stream_(stream),
      scene_(scene),
      kind_(kind),
      compares_(compares && HasKnownSamples(stream.Format())),
      device_(stream.Device()),
      format_(DescribeFormat(stream.Format())),
      rate_(stream.Format().nSamplesPerSec),
      channels_(std::clamp<unsigned>(stream.Format().nChannels, 1, 2)),
      begun_(scene.NowMicroseconds()),
      wave_(WaveColumns),
      inFlight_(TimeColumns) {}

StreamWatch::StreamWatch(WaveOutput& stream, Scene& scene, bool repeats)
    : StreamWatch(stream, scene, "playing", true) {
    comparison_.emplace(wave_, repeats);
    stream.SendSamples([this](std::span<const char> bytes) {
        LookAtCard();
        if (compares_) {
            comparison_->Ask(FramesOf(bytes));
        }
    });
    scene.Cards().SendPlayed(stream.Card(), stream.Port(), [this](std::span<const Frame> frames) {
        const std::lock_guard guard(mutex_);
        waiting_.insert(waiting_.end(), frames.begin(), frames.end());
    });
}

StreamWatch::StreamWatch(WaveInput& stream, Scene& scene) : StreamWatch(stream, scene, "recording", false) {
    stream.SendSamples([this](std::span<const char> bytes) {
        LookAtCard();
        AddRecorded(bytes);
    });
}

StreamWatch::StreamWatch(WaveInput& stream, Scene& scene, LoopbackComparison& comparison)
    : StreamWatch(stream, scene, "recording", true) {
    stream.SendSamples([this](std::span<const char>) { LookAtCard(); });
    comparison.SendCompared([this](std::span<const char> played, std::span<const char> recorded) {
        AddReturned(played, recorded);
    });
}

// Before a buffer that is back is handed over again, and after.
bool StreamWatch::LookAtCard() {
    const StreamStatus status = stream_.Status(scene_.Cards());
    const int64_t milliseconds = (scene_.NowMicroseconds() - begun_) / 1000;
    inFlight_.At(static_cast<uint64_t>(std::max<int64_t>(0, milliseconds)))
        .Merge({status.BuffersInFlight, status.BuffersInFlight});
    gaps_.Look(status);
    return status.StartFrame.has_value();
}

bool StreamWatch::Advance() {
    if (comparison_) {
        TakePlayed();
    }
    return LookAtCard();
}

void StreamWatch::TakePlayed() {
    std::vector<Frame> frames;
    {
        const std::lock_guard guard(mutex_);
        frames.swap(waiting_);
    }
    if (compares_) {
        comparison_->Play(frames);
    } else {
        wave_.AddCame(position_, frames);
        position_ += frames.size();
    }
}

void StreamWatch::AddRecorded(std::span<const char> bytes) {
    const std::vector<Frame> frames = FramesOf(bytes);
    wave_.AddCame(position_, frames);
    position_ += frames.size();
}

void StreamWatch::AddReturned(std::span<const char> played, std::span<const char> recorded) {
    const std::vector<Frame> asked = FramesOf(played);
    if (recorded.empty()) {
        wave_.AddMissing(position_, asked);
    } else {
        wave_.AddPair(position_, asked, FramesOf(recorded));
    }
    position_ += asked.size();
}

std::vector<Frame> StreamWatch::FramesOf(std::span<const char> bytes) const {
    std::vector<Frame> frames;
    if (HasKnownSamples(stream_.Format())) {
        AppendFrames(stream_.Format(), bytes, frames);
    }
    return frames;
}

void StreamWatch::End(size_t columns) {
    if (comparison_) {
        scene_.Cards().SendPlayed(device_ / 2,
                                  device_ % 2 ? simulator::Port::Digital : simulator::Port::Analog, {});
        TakePlayed();
        comparison_->Finish();
    }
    wave_.ReduceTo(columns);
}

std::string StreamWatch::Json() const {
    const auto bounds = [](const InFlight& column) {
        return column.IsEmpty()
                   ? "null"
                   : "[" + std::to_string(column.Least) + "," + std::to_string(column.Most) + "]";
    };
    return "{\"device\": " + std::to_string(device_) + ", \"kind\": " + QuotedJson(kind_) +
           ", \"format\": " + QuotedJson(format_) + ", \"rate\": " + std::to_string(rate_) +
           ",\n\"ms-per-column\": " + std::to_string(inFlight_.Width()) +
           ", \"in-flight\": " + JsonList(inFlight_.All(), bounds) + ",\n\"gaps\": " + gaps_.Json() +
           ",\n\"wave\": " + wave_.Json(channels_, compares_) + "}";
}

}  // namespace kestvox
