#include "report/gap_list.h"

#include "report/json_text.h"

namespace kestvox {
namespace {

constexpr size_t MostGaps = 100;

}  // namespace

void GapList::Look(uint64_t frames, uint64_t idle, unsigned inFlight) {
    if (frames < frames_) {
        before_ += frames_;
        idle_ = 0;
    }
    if (idle > idle_ && gaps_.size() < MostGaps) {
        gaps_.push_back({ranDry_, idle - idle_});
    }
    frames_ = frames;
    idle_ = idle;
    if (inFlight == 0) {
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
