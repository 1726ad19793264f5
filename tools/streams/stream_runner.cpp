#include "tools/streams/stream_runner.h"

#include <algorithm>
#include <cmath>

#include "tools/streams/interrupt.h"
#include "tools/system/driver_handle.h"

namespace kestvox {
namespace {

constexpr int64_t PollMilliseconds = 100;
constexpr int64_t PatienceMilliseconds = 5000;
constexpr DWORD FlushMilliseconds = 1000;
constexpr DWORD SleepMilliseconds = 100;

int64_t MicrosecondsOf(uint64_t frames, DWORD rate) {
    return static_cast<int64_t>((frames * 1000000 + rate - 1) / rate);
}

// Of a stream before the sleep and after it. What the clock counted between the two was silent.
StreamStatus Joined(const StreamStatus& before, const StreamStatus& after) {
    StreamStatus joined = after;
    joined.Frames += before.Frames;
    joined.IdleFrames += before.IdleFrames;
    joined.MostInFlight = std::max(before.MostInFlight, after.MostInFlight);
    if (before.StartFrame) {
        const uint64_t end = *before.StartFrame + before.Frames + before.IdleFrames;
        joined.IdleFrames += after.StartFrame && *after.StartFrame > end ? *after.StartFrame - end : 0;
        joined.StartFrame = before.StartFrame;
    }
    return joined;
}

}  // namespace

StreamRunner::StreamRunner(const StreamOptions& options, Scene& scene)
    : options_(options),
      scene_(scene),
      stepped_(scene.HasSimulator() && scene.Cards().Time() == simulator::TimeKind::Stepped),
      progress_(!stepped_) {}

void StreamRunner::Add(std::unique_ptr<WaveStream> stream) {
    streams_.push_back(std::move(stream));
    beforeSleep_.emplace_back();
}

// Several streams are all made ready before the first starts, so that those of one clock group can start
// together.
void StreamRunner::Start(DWORD pauseMilliseconds) {
    const bool together = streams_.size() > 1;
    for (const auto& stream : streams_) {
        stream->QueueFirst(together);
    }
    for (const auto& stream : streams_) {
        stream->Start(together);
        if (pauseMilliseconds != 0 && stream != streams_.back()) {
            Pause(pauseMilliseconds);
        }
    }
    lastMovementTime_ = scene_.NowMicroseconds();
}

void StreamRunner::RunToTheEnd() {
    while (!AllFinished() && FirstProblem().empty() && !IsInterrupted()) {
        LetTimePass();
        if (!StillMoves()) {
            stalled_ = true;
            return;
        }
        if (SleepIsDue()) {
            SleepAndWake();
        }
        for (const auto& stream : streams_) {
            stream->Refill();
        }
    }
}

bool StreamRunner::IsFinished(size_t stream) const {
    const WaveStream& what = *streams_[stream];
    return what.EndsByCount() ? StatusOf(stream).Frames >= what.FrameCount()
                              : what.FrameCount() == 0 || what.AllBack();
}

bool StreamRunner::AllFinished() const {
    for (size_t i = 0; i < streams_.size(); ++i) {
        if (!IsFinished(i)) {
            return false;
        }
    }
    return true;
}

bool StreamRunner::SleepIsDue() const {
    const double rate = streams_.front()->Format().nSamplesPerSec;
    return options_.SuspendAt && !slept_ &&
           static_cast<double>(StatusOf(0).Frames) >= std::floor(*options_.SuspendAt * rate);
}

// What the cards count begins again when the driver takes its channels back.
void StreamRunner::SleepAndWake() {
    slept_ = true;
    simulator::Simulator& cards = scene_.Cards();
    DriverHandle driver;
    driver.Send(DRV_POWER, PWR_SUSPENDREQUEST);
    for (size_t i = 0; i < streams_.size(); ++i) {
        beforeSleep_[i] = streams_[i]->Status(cards);
    }
    for (unsigned card = 0; card < cards.CardCount(); ++card) {
        cards.PowerCycle(card);
    }
    Pause(SleepMilliseconds);
    driver.Send(DRV_POWER, PWR_SUSPENDRESUME);
}

void StreamRunner::Pause(DWORD milliseconds) {
    if (stepped_) {
        scene_.Cards().Advance(int64_t{1000} * milliseconds);
    } else {
        Sleep(milliseconds);
    }
}

StreamStatus StreamRunner::StatusOf(size_t stream) const {
    const StreamStatus status = scene_.HasSimulator() ? streams_[stream]->Status(scene_.Cards())
                                                      : streams_[stream]->StatusByPosition();
    return slept_ ? Joined(beforeSleep_[stream], status) : status;
}

std::optional<int64_t> StreamRunner::TimeToNextMark() const {
    std::optional<int64_t> nearest;
    const auto note = [&](uint64_t frames, uint64_t mark, DWORD rate) {
        if (frames < mark) {
            const int64_t time = MicrosecondsOf(mark - frames, rate);
            nearest = nearest ? std::min(*nearest, time) : time;
        }
    };
    for (size_t i = 0; i < streams_.size(); ++i) {
        const DWORD rate = streams_[i]->Format().nSamplesPerSec;
        const uint64_t frames = StatusOf(i).Frames;
        if (streams_[i]->EndsByCount()) {
            note(frames, streams_[i]->FrameCount(), rate);
        }
        if (i == 0 && options_.SuspendAt && !slept_) {
            note(frames, static_cast<uint64_t>(*options_.SuspendAt * rate), rate);
        }
    }
    return nearest;
}

void StreamRunner::LetTimePass() {
    const std::optional<int64_t> mark = TimeToNextMark();
    if (stepped_) {
        const int64_t patience = 1000 * (PatienceMilliseconds + 2 * int64_t{options_.BufferMilliseconds});
        scene_.Cards().AdvanceToNextCompletion(std::min(patience, mark.value_or(patience)));
        return;
    }
    const int64_t toMark = mark.value_or(1000 * PollMilliseconds) / 1000 + 1;
    WaitForSingleObject(bufferBack_, static_cast<DWORD>(std::min(PollMilliseconds, toMark)));
    ShowProgress();
}

bool StreamRunner::StillMoves() {
    uint64_t movement = 0;
    for (size_t i = 0; i < streams_.size(); ++i) {
        movement += StatusOf(i).Frames + streams_[i]->HeadersReturned();
    }
    const int64_t now = scene_.NowMicroseconds();
    if (movement != lastMovement_) {
        lastMovement_ = movement;
        lastMovementTime_ = now;
    }
    return now - lastMovementTime_ < 1000 * PatienceMilliseconds;
}

void StreamRunner::ShowProgress() {
    unsigned inFlight = 0;
    for (size_t i = 0; i < streams_.size(); ++i) {
        inFlight += StatusOf(i).BuffersInFlight;
    }
    const WaveStream& first = *streams_.front();
    progress_.Show(StatusOf(0).Frames, first.FrameCount(), first.Format().nSamplesPerSec, inFlight);
}

void StreamRunner::Close() {
    progress_.Wipe();
    for (const auto& stream : streams_) {
        if (!stream->AllBack()) {
            stream->Stop();
        }
    }
    if (HeadersOut() > 0) {
        WaitForFlushedBuffers();
    }
    for (size_t i = 0; i < streams_.size(); ++i) {
        reports_.push_back({.Status = StatusOf(i), .HeadersReturned = streams_[i]->HeadersReturned()});
    }
    for (const auto& stream : streams_) {
        stream->Close();
    }
}

// The card gives flushed buffers back at once, but on a thread of the driver.
void StreamRunner::WaitForFlushedBuffers() {
    if (stepped_) {
        scene_.Cards().Advance(1);
        return;
    }
    while (HeadersOut() > 0 && WaitForSingleObject(bufferBack_, FlushMilliseconds) == WAIT_OBJECT_0) {
    }
}

unsigned StreamRunner::HeadersOut() const {
    unsigned out = 0;
    for (const auto& stream : streams_) {
        out += stream->HeadersOut();
    }
    return out;
}

std::string StreamRunner::FirstProblem() const {
    for (const auto& stream : streams_) {
        if (!stream->Problem().empty()) {
            return stream->Problem();
        }
    }
    if (stalled_) {
        return "the sound stood still before its end";
    }
    if (!reports_.empty() && options_.SuspendAt && !slept_ && !IsInterrupted()) {
        return "the sound had ended before it was time to suspend";
    }
    return {};
}

}  // namespace kestvox
