#include "report/played_comparison.h"

#include <algorithm>
#include <utility>

namespace kestvox {
namespace {

using simulator::Frame;

constexpr size_t FramesToTell = 256;  // a buffer by its beginning

bool Begins(const std::vector<Frame>& buffer, std::span<const Frame> coming) {
    const size_t count = std::min({buffer.size(), coming.size(), FramesToTell});
    return std::equal(coming.begin(), coming.begin() + static_cast<std::ptrdiff_t>(count), buffer.begin());
}

}  // namespace

void PlayedComparison::Ask(std::vector<Frame> frames) {
    if (!frames.empty()) {
        buffers_.push_back(std::move(frames));
    }
}

void PlayedComparison::Play(std::span<const Frame> frames) {
    played_.insert(played_.end(), frames.begin(), frames.end());
    Compare(FramesToTell);
}

void PlayedComparison::Finish() {
    Compare(0);
    while (!repeats_ && !buffers_.empty()) {
        PassOverBuffer();
    }
}

void PlayedComparison::TakeBack() {
    Compare(0);
    buffers_.clear();
    at_ = 0;
    fits_ = true;
}

// All but the last `keep` frames, which are needed to tell where those before belong.
void PlayedComparison::Compare(size_t keep) {
    size_t done = 0;
    while (played_.size() - done > keep) {
        const std::span<const Frame> coming = std::span(played_).subspan(done);
        size_t count = coming.size() - keep;
        if (buffers_.empty()) {
            summary_.AddUnasked(position_, coming.first(count));
            position_ += count;
            done += count;
            continue;
        }
        if (IsOffTrack(coming)) {
            FindTrack(coming);
        }
        // As many as fit, or as many as do not.
        const std::span<const Frame> asked = std::span(buffers_.front()).subspan(at_);
        fits_ = asked[0] == coming[0];
        const size_t most = std::min(count, asked.size());
        for (count = 1; count < most && (asked[count] == coming[count]) == fits_; ++count) {
        }
        summary_.AddPair(position_, asked.first(count), coming.first(count));
        MoveOn(count);
        done += count;
    }
    played_.erase(played_.begin(), played_.begin() + static_cast<std::ptrdiff_t>(done));
}

bool PlayedComparison::IsOffTrack(std::span<const Frame> coming) const {
    const std::vector<Frame>& buffer = buffers_.front();
    return at_ == 0 ? !Begins(buffer, coming) : fits_ && buffer[at_] != coming[0];
}

void PlayedComparison::FindTrack(std::span<const Frame> coming) {
    const auto found = std::ranges::find_if(
        buffers_, [&](const std::vector<Frame>& buffer) { return Begins(buffer, coming); });
    if (found == buffers_.end()) {
        return;
    }
    if (found == buffers_.begin()) {
        position_ -= at_;  // once more
        at_ = 0;
    }
    for (auto passed = found - buffers_.begin(); passed > 0; --passed) {
        PassOverBuffer();
    }
}

void PlayedComparison::PassOverBuffer() {
    const std::span<const Frame> left = std::span(buffers_.front()).subspan(at_);
    summary_.AddMissing(position_, left);
    MoveOn(left.size());
}

void PlayedComparison::MoveOn(size_t frames) {
    position_ += frames;
    at_ += frames;
    if (at_ == buffers_.front().size()) {
        if (repeats_) {
            buffers_.push_back(std::move(buffers_.front()));
        }
        buffers_.pop_front();
        at_ = 0;
        fits_ = true;
    }
}

}  // namespace kestvox
