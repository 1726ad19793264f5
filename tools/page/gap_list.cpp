#include "tools/page/gap_list.h"

#include "tools/system/json_text.h"

namespace kestvox {
namespace {

constexpr size_t MostGaps = 100;

}  // namespace

void GapList::Look(const StreamStatus& status) {
    if (status.Frames < frames_) {
        before_ += frames_;
        idle_ = 0;
    }
    if (status.IdleFrames > idle_ && gaps_.size() < MostGaps) {
        gaps_.push_back({ranDry_, status.IdleFrames - idle_});
    }
    frames_ = status.Frames;
    idle_ = status.IdleFrames;
    if (status.BuffersInFlight == 0) {
        ranDry_ = before_ + frames_;
    }
}

std::string GapList::Json() const {
    return JsonList(gaps_, [](const Gap& gap) {
        return "{\"frame\": " + std::to_string(gap.Frame) + ", \"length\": " + std::to_string(gap.Length) +
               "}";
    });
}

}  // namespace kestvox
