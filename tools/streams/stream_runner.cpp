#include "tools/streams/stream_runner.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "tools/machine/host.h"
#include "tools/system/driver_handle.h"
#include "tools/system/interrupt.h"

namespace kestvox {
namespace {

constexpr int64_t PollMilliseconds = 100;
constexpr int64_t PatienceMilliseconds = 5000;
constexpr DWORD FlushMilliseconds = 1000;
constexpr auto LongSideWork = std::chrono::milliseconds(500);
constexpr DWORD SleepMilliseconds = 100;

constexpr uint64_t MostSeconds = uint64_t{1} << 40;  // so that twice as many microseconds can be counted

int64_t MicrosecondsOf(uint64_t frames, DWORD rate) {
    const uint64_t seconds = std::min(frames / rate, MostSeconds);
    return static_cast<int64_t>(seconds * 1000000 + (frames % rate * 1000000 + rate - 1) / rate);
}

// Of a stream before the sleep and after it. What the clock counted between the two was silent.
StreamStatus Joined(const StreamStatus& before, const StreamStatus& after) {
    StreamStatus joined = after;
    joined.Frames += before.Frames;
    joined.IdleFrames += before.IdleFrames;
    joined.MostInFlight = std::max(before.MostInFlight, after.MostInFlight);
    joined.BuffersMoved += before.BuffersMoved;
    joined.Gaps.First = before.Gaps.Count != 0 ? before.Gaps.First : before.Frames + after.Gaps.First;
    joined.Gaps.Count += before.Gaps.Count;
    joined.Gaps.Longest = std::max(before.Gaps.Longest, after.Gaps.Longest);
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
      progress_(!options.Quiet),
      watch_(1000 * (PatienceMilliseconds + 2 * int64_t{options.BufferMilliseconds}),
             !stepped_ || !MachineIsShared()) {}

void StreamRunner::Add(std::unique_ptr<WaveStream> stream) {
    if (trace_) {
        stream->SendHeaders([this, card = stream->Card(), channel = stream->Channel()](
                                simulator::HeaderEvent::Kind what, const WAVEHDR& header) {
            trace_->Take(scene_.Cards().NoteHeader(what, card, channel, &header));
        });
    }
    streams_.push_back(std::move(stream));
    beforeSleep_.emplace_back();
}

void StreamRunner::Add(std::unique_ptr<SideWork> work) {
    Add(*work);
    ownWork_.push_back(std::move(work));
}

// Several streams are all made ready before the first starts, so that those of one clock group can start
// together.
void StreamRunner::Start(DWORD pauseMilliseconds) {
    const bool together = streams_.size() > 1;
    for (SideWork* work : sideWork_) {
        work->Advance();
    }
    for (const auto& stream : streams_) {
        stream->QueueFirst(together);
    }
    for (const auto& stream : streams_) {
        stream->Start(together);
        if (pauseMilliseconds != 0 && stream != streams_.back()) {
            Pause(pauseMilliseconds);
        }
    }
    watch_.Begin(scene_.NowMicroseconds());
}

void StreamRunner::RunToTheEnd() {
    while (!AllFinished() && FirstProblem().empty() && !IsInterrupted()) {
        LetTimePass();
        if (!StillMoves()) {
            return;
        }
        if (SleepIsDue()) {
            SleepAndWake();
        }
        DoSideWork();
    }
}

// Buffers first: they are what the card waits for. Whatever the program had to wait for itself is not the
// streams' fault.
void StreamRunner::DoSideWork() {
    const auto begin = std::chrono::steady_clock::now();
    for (const auto& stream : streams_) {
        stream->Refill();
    }
    for (SideWork* work : sideWork_) {
        work->Advance();
    }
    if (std::chrono::steady_clock::now() - begin > LongSideWork) {
        watch_.Excuse(scene_.NowMicroseconds());
    }
}

bool StreamRunner::AllFinished() const {
    for (size_t i = 0; i < streams_.size(); ++i) {
        if (!streams_[i]->IsFinished(StatusOf(i).Frames)) {
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
            note(frames, streams_[i]->FrameCount().value_or(0), rate);
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
    } else {
        const int64_t toMark = mark.value_or(1000 * PollMilliseconds) / 1000 + 1;
        WaitForSingleObject(bufferBack_, static_cast<DWORD>(std::min(PollMilliseconds, toMark)));
    }
    ShowProgress();
}

StreamProgress StreamRunner::ProgressOf(size_t index) const {
    const WaveStream& stream = *streams_[index];
    const uint64_t frames = StatusOf(index).Frames;
    const std::optional<uint64_t> length = stream.FrameCount();
    // A recording's buffers that come back empty are no progress.
    return {.Movement = frames + (stream.EndsByCount() ? 0 : stream.HeadersReturned()),
            .IsFinished = stream.IsFinished(frames),
            .Length = length ? std::optional(MicrosecondsOf(*length, stream.Format().nSamplesPerSec))
                             : std::nullopt};
}

bool StreamRunner::StillMoves() {
    std::vector<StreamProgress> progress;
    for (size_t i = 0; i < streams_.size(); ++i) {
        progress.push_back(ProgressOf(i));
    }
    if (const auto finding = watch_.Look(progress, scene_.NowMicroseconds())) {
        standstill_ = DescribeStandstill(*finding);
    }
    return standstill_.empty();
}

std::string StreamRunner::DescribeStandstill(const ProgressWatch::Finding& finding) const {
    const WaveStream& stream = *streams_[finding.Stream];
    const std::optional<uint64_t> length = stream.FrameCount();
    const unsigned out = stream.HeadersOut();
    char time[32];
    std::snprintf(time, sizeof time, "%.1f s", static_cast<double>(finding.Microseconds) / 1e6);
    const std::string waited = out == 0   ? "more frames"
                               : out == 1 ? "a header to come back"
                                          : std::to_string(out) + " headers to come back";
    return "device " + std::to_string(stream.Device()) + ": " +
           (finding.Microseconds > 0 ? std::string("nothing moved for ") + time
                                     : "it did not end in twice its length") +
           ", at frame " + std::to_string(StatusOf(finding.Stream).Frames) +
           (length ? " of " + std::to_string(*length) : "") + ", while it waited for " + waited;
}

void StreamRunner::ShowProgress() {
    if (!progress_.IsDue()) {
        return;
    }
    const WaveStream& first = *streams_.front();
    const double rate = first.Format().nSamplesPerSec;
    Progress progress;
    progress.Seconds = static_cast<double>(StatusOf(0).Frames) / rate;
    if (const std::optional<uint64_t> length = first.FrameCount()) {
        progress.TotalSeconds = static_cast<double>(*length) / rate;
    }
    for (size_t i = 0; i < streams_.size(); ++i) {
        progress.BuffersInFlight += StatusOf(i).BuffersInFlight;
        streams_[i]->WatchLevel();
        if (const std::optional<double> level = streams_[i]->TakeLevel()) {
            progress.Decibels = std::max(progress.Decibels.value_or(*level), *level);
        }
    }
    progress_.Show(progress);
}

void StreamRunner::Close() {
    progress_.Wipe();
    std::vector<uint64_t> unused;
    for (size_t i = 0; i < streams_.size(); ++i) {
        unused.push_back(HeadersUnused(i));
    }
    for (const auto& stream : streams_) {
        if (!stream->AllBack()) {
            stream->Stop();
        }
    }
    if (HeadersOut() > 0) {
        WaitForFlushedBuffers();
    }
    for (size_t i = 0; i < streams_.size(); ++i) {
        reports_.push_back({.Status = StatusOf(i),
                            .FrameCount = streams_[i]->FrameCount(),
                            .HeadersReturned = streams_[i]->HeadersReturned(),
                            .HeadersUnused = unused[i]});
    }
    for (const auto& stream : streams_) {
        stream->Close();
    }
    for (SideWork* work : sideWork_) {
        work->Advance();
    }
}

uint64_t StreamRunner::HeadersUnused(size_t stream) const {
    return scene_.HasSimulator() ? streams_[stream]->HeadersUnused(StatusOf(stream).BuffersMoved) : 0;
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
    if (!standstill_.empty()) {
        return standstill_;
    }
    for (const auto& stream : streams_) {
        if (!stream->Problem().empty()) {
            return stream->Problem();
        }
    }
    for (const SideWork* work : sideWork_) {
        if (std::string problem = work->Problem(); !problem.empty()) {
            return problem;
        }
    }
    if (!reports_.empty() && options_.SuspendAt && !slept_ && !IsInterrupted()) {
        return "the sound had ended before it was time to suspend";
    }
    return {};
}

}  // namespace kestvox
