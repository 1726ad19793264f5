#include "report/close_up.h"

#include <algorithm>

#include "report/json_text.h"

namespace kestvox {
namespace {

using simulator::Frame;

constexpr size_t FramesBefore = 100;
constexpr size_t FramesAfter = 150;

std::optional<Frame> FrameAt(std::span<const Frame> frames, size_t at) {
    return frames.empty() ? std::nullopt : std::optional(frames[at]);
}

}  // namespace

void CloseUp::Add(uint64_t position, std::span<const Frame> asked, std::span<const Frame> came, size_t same) {
    const size_t count = std::max(asked.size(), came.size());
    size_t at = after_ == 0 ? same - std::min(same, FramesBefore) : 0;
    for (; at < count && after_ < FramesAfter; ++at) {
        pairs_.push_back({position + at, FrameAt(asked, at), FrameAt(came, at)});
        after_ += after_ > 0 || at >= same ? 1 : 0;
    }
    if (after_ == 0 && pairs_.size() > FramesBefore) {
        pairs_.erase(pairs_.begin(), pairs_.end() - FramesBefore);
    }
}

std::string CloseUp::Json(unsigned channels) const {
    if (after_ == 0) {
        return "null";
    }
    const auto sides = [&](std::optional<Frame> Pair::*which) {
        std::string text;
        for (unsigned side = 0; side < channels; ++side) {
            text += (side == 0 ? "" : ",\n") + JsonList(pairs_, [&](const Pair& pair) {
                        const std::optional<Frame>& frame = pair.*which;
                        return frame ? std::to_string(side == 0 ? frame->Left : frame->Right) : "null";
                    });
        }
        return "[" + text + "]";
    };
    return "{\"first\": " + std::to_string(pairs_.front().Position) + ",\n\"asked\": " + sides(&Pair::Asked) +
           ",\n\"came\": " + sides(&Pair::Came) + "}";
}

}  // namespace kestvox
