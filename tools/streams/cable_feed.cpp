#include "tools/streams/cable_feed.h"

#include <algorithm>

#include "tools/command_error.h"
#include "tools/machine/host.h"

namespace kestvox {
namespace {

using simulator::Frame;

// Before anything listens.
const simulator::Connector& Require(const Scene& scene, const simulator::Connector& output,
                                    const std::string& what) {
    scene.RequireCard(output.Card, what);
    if (!MachineIsShared()) {
        throw CommandError(what + ": --machine names the machine that the other program is on");
    }
    if (scene.Cards().Time() == simulator::TimeKind::Stepped) {
        throw CommandError(what + ": another program can be heard in real time only");
    }
    return output;
}

}  // namespace

CableFeed::CableFeed(const Scene& scene, const simulator::Connector& output, unsigned rate,
                     const std::string& what)
    : listener_(Require(scene, output, what).Card, output.Port),
      rate_(rate),
      queue_(std::make_shared<Queue>()) {
    if (!listener_.IsConnected()) {
        throw CommandError(what + ": as many programs listen as the machine has room for");
    }
    queue_->Length = rate;
}

simulator::InputSignal CableFeed::Signal() const {
    return simulator::InputSignal::Stream(
        [queue = queue_](std::span<Frame> frames) { return queue->Take(frames); });
}

size_t CableFeed::Queue::Take(std::span<Frame> frames) {
    const std::lock_guard guard(Mutex);
    Flows = Flows || Ends || Frames.size() >= Length;
    const size_t count = Flows ? std::min(frames.size(), Frames.size()) : 0;
    const auto end = Frames.begin() + static_cast<std::ptrdiff_t>(count);
    std::fill(std::copy(Frames.begin(), end, frames.begin()), frames.end(), Frame{});
    Frames.erase(Frames.begin(), end);
    if (count > 0) {
        LastAt = Taken + count;
    }
    if (Flows && count < frames.size()) {
        IsDry = !Ends;
        Flows = false;
    }
    Taken += frames.size();
    return frames.size();
}

std::optional<uint64_t> CableFeed::FrameCount() const {
    const std::lock_guard guard(queue_->Mutex);
    const bool isOver = queue_->Ends && queue_->Frames.empty() && queue_->LastAt != 0;
    return isOver ? std::optional(queue_->LastAt) : std::nullopt;
}

std::string CableFeed::Loss() const {
    const std::lock_guard guard(queue_->Mutex);
    if (lost_ > 0) {
        return std::to_string(lost_) + " frames of the cable were not taken in time";
    }
    return queue_->RanDry > 0 ? "the cable ran dry " + std::to_string(queue_->RanDry) +
                                    (queue_->RanDry == 1 ? " time" : " times") +
                                    ", as the other program paused or did not get to run for a second"
                              : "";
}

// The listener takes the machine's lock, which the card has when it asks the queue.
void CableFeed::Advance() {
    const simulator::Listener::Heard heard = listener_.Take();
    lost_ += heard.Lost;
    if (!heard.Frames.empty() && heard.Rate != rate_ && problem_.empty()) {
        problem_ = "the output at the other end of the cable runs at " + std::to_string(heard.Rate) +
                   " Hz, and the recording at " + std::to_string(rate_) + " Hz";
    }
    const std::lock_guard guard(queue_->Mutex);
    queue_->Frames.insert(queue_->Frames.end(), heard.Frames.begin(), heard.Frames.end());
    queue_->Ends = !heard.InUse;
    if (queue_->IsDry && (queue_->Ends || !heard.Frames.empty())) {
        queue_->RanDry += heard.Frames.empty() ? 0 : 1;
        queue_->IsDry = false;
    }
}

}  // namespace kestvox
