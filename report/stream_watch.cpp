#include "report/stream_watch.h"

#include <utility>

#include "report/json_text.h"
#include "report/samples.h"
#include "report/wave_format.h"

namespace kestvox {
namespace {

using simulator::Frame;

constexpr size_t WaveColumns = 2000;
constexpr size_t TimeColumns = 1000;

std::vector<char> BytesOf(const WAVEFORMATEX& format) {
    const auto* const bytes = reinterpret_cast<const char*>(&format);
    // The extension of plain PCM does not count.
    const WORD extension = format.wFormatTag == WAVE_FORMAT_PCM ? WORD{0} : format.cbSize;
    return {bytes, bytes + sizeof format + extension};
}

}  // namespace

StreamWatch::StreamWatch(simulator::Simulator& cards, const WatchedStream& stream)
    : cards_(cards),
      name_(stream.Name),
      device_(stream.Device),
      kind_(stream.Kind),
      formatBytes_(BytesOf(*stream.Format)),
      format_(*reinterpret_cast<const WAVEFORMATEX*>(formatBytes_.data())),
      holdsAgainst_(stream.Compares && HasKnownSamples(format_)),
      compares_(holdsAgainst_),
      begun_(cards.NowMicroseconds()),
      wave_(WaveColumns),
      inFlight_(TimeColumns),
      comparison_(wave_, stream.Repeats) {
    if (IsPlaying()) {
        cards.SendPlayed(Card(), Port(), [this](std::span<const Frame> frames) {
            const std::lock_guard guard(mutex_);
            waiting_.insert(waiting_.end(), frames.begin(), frames.end());
        });
    }
}

void StreamWatch::Ask(std::span<const char> bytes) {
    Advance();
    if (compares_) {
        comparison_.Ask(FramesOf(bytes));
    }
}

void StreamWatch::TakeBack() {
    Advance();
    comparison_.TakeBack();
}

void StreamWatch::AddRecorded(std::span<const char> bytes) {
    Advance();
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

StreamWatch::CardView StreamWatch::ViewCard() const {
    if (IsPlaying()) {
        const simulator::OutputStatus status = cards_.Output(Card(), Port());
        return {status.Started, status.FramesPlayed, status.FramesSilent, status.BuffersInFlight};
    }
    const simulator::InputStatus status = cards_.Input(Card(), Port());
    return {status.Started, status.FramesRecorded, status.FramesDropped, status.BuffersInFlight};
}

bool StreamWatch::Advance() {
    if (closed_) {
        return false;
    }
    if (IsPlaying()) {
        TakePlayed();
    }
    const CardView view = ViewCard();
    const int64_t milliseconds = (cards_.NowMicroseconds() - begun_) / 1000;
    inFlight_.At(static_cast<uint64_t>(std::max<int64_t>(0, milliseconds)))
        .Merge({view.InFlight, view.InFlight});
    gaps_.Look(view.Frames, view.Idle, view.InFlight);
    return view.Started;
}

void StreamWatch::TakePlayed() {
    std::vector<Frame> frames;
    {
        const std::lock_guard guard(mutex_);
        frames.swap(waiting_);
    }
    if (holdsAgainst_) {
        comparison_.Play(frames);
    } else {
        wave_.AddCame(position_, frames);
        position_ += frames.size();
    }
}

std::vector<Frame> StreamWatch::FramesOf(std::span<const char> bytes) const {
    std::vector<Frame> frames;
    if (HasKnownSamples(format_)) {
        AppendFrames(format_, bytes, frames);
    }
    return frames;
}

void StreamWatch::Close() {
    if (IsPlaying() && !closed_) {
        cards_.SendPlayed(Card(), Port(), {});
        TakePlayed();
        comparison_.Finish();
    }
    closed_ = true;
}

std::string StreamWatch::Json() const {
    const auto bounds = [](const InFlight& column) {
        return column.IsEmpty()
                   ? "null"
                   : "[" + std::to_string(column.Least) + "," + std::to_string(column.Most) + "]";
    };
    const unsigned channels = std::clamp<unsigned>(format_.nChannels, 1, 2);
    return "{\"name\": " + QuotedJson(name_) + ", \"device\": " + std::to_string(device_) +
           ", \"kind\": " + QuotedJson(IsPlaying() ? "playing" : "recording") +
           ", \"format\": " + QuotedJson(DescribeFormat(format_)) +
           ", \"rate\": " + std::to_string(format_.nSamplesPerSec) +
           ",\n\"ms-per-column\": " + std::to_string(inFlight_.Width()) +
           ", \"in-flight\": " + JsonList(inFlight_.All(), bounds) + ",\n\"gaps\": " + gaps_.Json() +
           ",\n\"wave\": " + wave_.Json(channels, compares_) + "}";
}

}  // namespace kestvox
