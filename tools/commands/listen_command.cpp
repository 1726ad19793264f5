#include <algorithm>
#include <cstdio>
#include <optional>

#include "report/report.h"
#include "report/wave_format.h"
#include "simulator/machine/listener.h"
#include "tools/command_error.h"
#include "tools/commands/commands.h"
#include "tools/files/output_file.h"
#include "tools/files/wav_writer.h"
#include "tools/machine/host.h"
#include "tools/machine/scene.h"
#include "tools/system/interrupt.h"
#include "tools/system/message.h"

namespace kestvox {
namespace {

constexpr DWORD LookMilliseconds = 20;

// What is heard, on its way into a file that begins with the first frame.
class Take {
public:
    explicit Take(const ListenOptions& options) : file_(options.File), seconds_(options.Seconds) {}

    void Add(const simulator::Listener::Heard& heard) {
        lost_ += heard.Lost;
        if (heard.Frames.empty()) {
            return;
        }
        if (!writer_) {
            rate_ = heard.Rate;
            writer_.emplace(file_, ConnectorFormat(rate_).Format);
        }
        rateChanged_ = heard.Rate != rate_;
        const auto count = static_cast<size_t>(
            rateChanged_ ? 0 : std::min<uint64_t>(heard.Frames.size(), Wanted() - frames_));
        frames_ += count;
        writer_->Write(
            {reinterpret_cast<const char*>(heard.Frames.data()), count * sizeof(simulator::Frame)});
    }

    bool HasBegun() const { return frames_ > 0; }
    // By itself the take ends with the stream that is heard.
    bool IsOver(bool outputInUse) const {
        return !Problem().empty() || frames_ == Wanted() || (!seconds_ && HasBegun() && !outputInUse);
    }

    std::string Problem() const {
        if (rateChanged_) {
            return "the card has changed its rate, and the file has " + std::to_string(rate_) + " Hz";
        }
        return writer_ ? writer_->Problem() : file_.Problem();
    }
    uint64_t Lost() const { return lost_; }

    void Finish() {
        if (writer_) {
            writer_->Finish();
        }
    }

    void PrintReport(std::FILE* out, unsigned device) const {
        Report report;
        report.Add("device", device);
        report.Add("rate", rate_);
        report.Add("frames-heard", frames_);
        report.Add("frames-lost", lost_);
        report.PrintText(out);
    }

private:
    uint64_t Wanted() const {
        return seconds_ && rate_ > 0 ? std::max<uint64_t>(1, static_cast<uint64_t>(*seconds_ * rate_))
                                     : UINT64_MAX;
    }

    OutputFile file_;
    const std::optional<double> seconds_;
    std::optional<WavWriter> writer_;
    unsigned rate_ = 0;
    uint64_t frames_ = 0;
    uint64_t lost_ = 0;
    bool rateChanged_ = false;
};

void RequireRealTime(const Scene& scene) {
    if (scene.Cards().Time() == simulator::TimeKind::Stepped) {
        throw CommandError("the machine runs in stepped time; only real time can be listened to");
    }
}

void Hear(Take& take, const ListenOptions& options) {
    Scene scene(options.Scene);
    scene.RequireCard(options.Device / 2, "listen");
    RequireRealTime(scene);
    simulator::Listener listener(options.Device / 2,
                                 options.Device % 2 ? simulator::Port::Digital : simulator::Port::Analog);
    if (!listener.IsConnected()) {
        throw CommandError("as many programs listen as the machine has room for");
    }
    PrintNote("listening to device " + std::to_string(options.Device));
    for (bool inUse = true; !IsInterrupted() && !take.IsOver(inUse);) {
        Sleep(LookMilliseconds);
        const simulator::Listener::Heard heard = listener.Take();
        inUse = heard.InUse;
        take.Add(heard);
    }
}

}  // namespace

int Listen(const ListenOptions& options) {
    EnterMachine(options.Scene.Machine);
    if (!MachineIsShared()) {
        throw CommandError("listen: --machine names the machine that the other program is on");
    }
    const InterruptGuard interrupts;
    Take take(options);
    Hear(take, options);
    take.Finish();
    take.PrintReport(SameFile(options.File, "-") ? stderr : stdout, options.Device);
    std::string problem = take.Problem();
    if (problem.empty() && take.Lost() > 0) {
        problem = std::to_string(take.Lost()) + " frames were not taken in time";
    } else if (problem.empty() && !take.HasBegun()) {
        problem = "nothing was heard, and nothing is written";
    }
    if (!problem.empty()) {
        PrintProblem(problem);
    }
    const int interrupted = InterruptStatus();
    return interrupted != 0 ? interrupted : problem.empty() ? ExitSuccess : ExitFailed;
}

}  // namespace kestvox
