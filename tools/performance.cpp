#include "tools/performance.h"

#include <algorithm>
#include <cstdio>

namespace kestvox {
namespace {

constexpr DWORD PollMilliseconds = 100;
constexpr DWORD PatienceMilliseconds = 5000;
constexpr DWORD FlushMilliseconds = 1000;

// Each card has an analog and a digital device.
unsigned CardOf(const WaveOutput& output) {
    return output.Device() / 2;
}

simulator::Port PortOf(const WaveOutput& output) {
    return output.Device() % 2 ? simulator::Port::Digital : simulator::Port::Analog;
}

}  // namespace

Performance::Performance(const PlayOptions& options, Scene& scene)
    : options_(options), scene_(scene), progress_(options.Scene.Time == simulator::TimeKind::Real) {
    for (size_t i = 0; i < options_.Devices.size(); ++i) {
        const std::string& file = options_.Files[options_.Files.size() == 1 ? 0 : i];
        outputs_.push_back(std::make_unique<WaveOutput>(options_.Devices[i], file, done_));
    }
    for (const auto& output : outputs_) {
        if (options_.Volume) {
            output->SetVolume(*options_.Volume);
        }
        output->PrepareBuffers(options_.Buffers, options_.BufferMilliseconds, options_.Passes);
    }
}

// Several devices are filled while paused, so that those of one clock group can start together.
void Performance::Start() {
    const bool together = outputs_.size() > 1;
    for (const auto& output : outputs_) {
        if (together) {
            output->Pause();
        }
        output->Refill();
    }
    for (const auto& output : outputs_) {
        if (together) {
            output->Restart();
        }
    }
    lastMovementTime_ = timeGetTime();
}

void Performance::PlayToTheEnd(const volatile std::sig_atomic_t* stop) {
    while (!AllBack() && FirstProblem().empty() && !*stop && LetTimePass()) {
        for (const auto& output : outputs_) {
            output->Refill();
        }
    }
}

bool Performance::LetTimePass() {
    return options_.Scene.Time == simulator::TimeKind::Stepped ? LetVirtualTimePass() : LetRealTimePass();
}

bool Performance::LetVirtualTimePass() {
    const unsigned before = HeadersReturned();
    const int64_t limit = int64_t{1000} * (PatienceMilliseconds + 2 * options_.BufferMilliseconds);
    return scene_.Cards().AdvanceToNextCompletion(limit) || HeadersReturned() != before;
}

bool Performance::LetRealTimePass() {
    WaitForSingleObject(done_, PollMilliseconds);
    ShowProgress();
    uint64_t movement = HeadersReturned();
    for (const auto& output : outputs_) {
        movement += StatusOf(*output).FramesPlayed;
    }
    const DWORD now = timeGetTime();
    if (movement != lastMovement_) {
        lastMovement_ = movement;
        lastMovementTime_ = now;
    }
    return now - lastMovementTime_ < PatienceMilliseconds;
}

void Performance::ShowProgress() {
    unsigned inFlight = 0;
    for (const auto& output : outputs_) {
        inFlight += StatusOf(*output).BuffersInFlight;
    }
    const WaveOutput& first = *outputs_.front();
    progress_.Show(first.Position(), first.FrameCount(), first.Format().nSamplesPerSec, inFlight);
}

void Performance::Close() {
    progress_.Wipe();
    if (!AllBack()) {
        for (const auto& output : outputs_) {
            output->Stop();
        }
        WaitForFlushedBuffers();
    }
    for (const auto& output : outputs_) {
        Report report{.Status = StatusOf(*output), .HeadersReturned = output->HeadersReturned(), .Heard = {}};
        if (!options_.Capture.empty()) {
            report.Heard = scene_.Cards().Heard(CardOf(*output), PortOf(*output));
        }
        reports_.push_back(std::move(report));
    }
    for (const auto& output : outputs_) {
        output->Close();
    }
}

// The card gives flushed buffers back at once, but on a thread of the driver.
void Performance::WaitForFlushedBuffers() {
    if (options_.Scene.Time == simulator::TimeKind::Stepped) {
        scene_.Cards().Advance(1);
        return;
    }
    while (HeadersOut() > 0 && WaitForSingleObject(done_, FlushMilliseconds) == WAIT_OBJECT_0) {
    }
}

simulator::OutputStatus Performance::StatusOf(const WaveOutput& output) const {
    return scene_.Cards().Output(CardOf(output), PortOf(output));
}

bool Performance::AllBack() const {
    return std::ranges::all_of(
        outputs_, [](const auto& output) { return output->AllWritten() && output->HeadersOut() == 0; });
}

unsigned Performance::HeadersReturned() const {
    unsigned returned = 0;
    for (const auto& output : outputs_) {
        returned += output->HeadersReturned();
    }
    return returned;
}

unsigned Performance::HeadersOut() const {
    unsigned out = 0;
    for (const auto& output : outputs_) {
        out += output->HeadersOut();
    }
    return out;
}

void Performance::WriteCaptures(const std::vector<std::unique_ptr<OutputFile>>& files) const {
    for (size_t i = 0; i < files.size(); ++i) {
        WriteWav(files[i]->Stream(), outputs_[i]->Format().nSamplesPerSec, reports_[i].Heard);
        files[i]->Commit();
    }
}

void Performance::PrintSummary() const {
    for (size_t i = 0; i < outputs_.size(); ++i) {
        const simulator::OutputStatus& status = reports_[i].Status;
        const std::string start = status.Started ? std::to_string(status.StartFrame) : "none";
        std::printf("device: %u\n", outputs_[i]->Device());
        std::printf("frames-played: %llu\n", static_cast<unsigned long long>(status.FramesPlayed));
        std::printf("headers-returned: %u\n", reports_[i].HeadersReturned);
        std::printf("most-in-flight: %u\n", status.MostInFlight);
        std::printf("start-frame: %s\n", start.c_str());
        std::printf("silent-frames: %llu\n", static_cast<unsigned long long>(status.FramesSilent));
    }
}

std::string Performance::FirstProblem() const {
    for (const auto& output : outputs_) {
        if (!output->Problem().empty()) {
            return output->Problem();
        }
    }
    return {};
}

}  // namespace kestvox
