#include <algorithm>
#include <memory>
#include <utility>

#include "tools/command_error.h"
#include "tools/commands/commands.h"
#include "tools/commands/stream_command.h"
#include "tools/files/wav_reader.h"
#include "tools/streams/capture_file.h"
#include "tools/streams/loopback_comparison.h"
#include "tools/streams/recording_file.h"
#include "tools/streams/wave_input.h"
#include "tools/streams/wave_output.h"
#include "tools/system/interrupt.h"

namespace kestvox {
namespace {

constexpr DWORD HeadStartMilliseconds = 10;
// Of buffers that the recording has at least, so that it outlasts the head start, the opening of the playback
// and a busy computer, however short each buffer is.
constexpr unsigned LeadMilliseconds = 400;

// On every card, because the mode that counts is that of the clock's master.
LoopbackOptions WithRecordModeStored(LoopbackOptions options) {
    options.Scene.Settings.push_back(std::string("Punchin=") + (options.Lock ? "0" : "1"));
    return options;
}

unsigned RecordingBuffers(const LoopbackOptions& options) {
    const unsigned lead = (LeadMilliseconds + options.BufferMilliseconds - 1) / options.BufferMilliseconds;
    return std::max(options.Buffers, lead);
}

// By the clock that both streams run on.
std::optional<int64_t> OffsetOf(const WaveOutput& output, const WaveInput& input, const Scene& scene) {
    const std::optional<uint64_t> played = output.Status(scene.Cards()).StartFrame;
    const std::optional<uint64_t> recorded = input.Status(scene.Cards()).StartFrame;
    return played && recorded ? std::optional(static_cast<int64_t>(*played - *recorded)) : std::nullopt;
}

// The recording has a head start, which only a locked one does not notice, and goes on until the last played
// frame must have come back.
void RunBoth(StreamRunner& runner, WaveInput& input, const Scene& scene) {
    runner.Start(HeadStartMilliseconds);
    runner.RunToTheEnd();
    if (runner.FirstProblem().empty() && !IsInterrupted()) {
        input.SetFrameCount(input.Status(scene.Cards()).Frames + 1);
        runner.RunToTheEnd();
    }
    runner.Close();
}

void AddComparison(Outcome& outcome, const LoopbackComparison& comparison) {
    outcome.Report.EndStreams();
    outcome.Report.Add("offset-frames", comparison.Offset());
    outcome.Report.Add("samples-lost", comparison.SamplesLost());
    if (const uint64_t lost = comparison.SamplesLost()) {
        outcome.Run.Losses.push_back(std::to_string(lost) + (lost == 1 ? " sample" : " samples") +
                                     " did not come back as " + (lost == 1 ? "it was" : "they were") +
                                     " played");
    }
}

}  // namespace

int Loopback(const LoopbackOptions& asked) {
    const LoopbackOptions options = WithRecordModeStored(asked);
    FileRoles roles{.Read = {{"FILE", options.File}}, .Written = {}};
    if (!options.Out.empty()) {
        roles.Written.push_back({"--out", options.Out});
    }
    if (!options.CapturePattern.empty()) {
        roles.Written.push_back({"--capture", CapturePathOfPattern(options.CapturePattern, options.Device)});
    }
    RequireDifferentFiles(roles, options);
    WavReader file(options.File);
    if (file.IsPipe()) {
        throw CommandError(options.File +
                           ": is read twice, to play and to compare, so that it must be a file");
    }
    const WavReader format(options.File);
    LoopbackComparison comparison{WavReader(options.File)};
    std::unique_ptr<RecordingFile> out;
    if (!options.Out.empty()) {
        out = std::make_unique<RecordingFile>(options.Out, format.Format());
    }
    std::optional<CaptureFile> capture;
    if (!options.CapturePattern.empty()) {
        capture.emplace(roles.Written.back().Path);
    }

    return RunStreams(
        "loopback", options, roles,
        [&](Scene& scene, StreamRunner& runner, Outcome& outcome, PageFile* page) {
            auto playing = std::make_unique<WaveOutput>(options.Device, std::move(file), runner.BufferBack());
            WaveOutput& output = *playing;
            output.PrepareBuffers(options.Buffers, options.BufferMilliseconds, 1);
            scene.PlugIn(options.Device, simulator::InputSignal::Cable(output.Card(), output.Port()));
            WaveInput* self = nullptr;
            auto recording = std::make_unique<WaveInput>(
                options.Device, format.Format(), runner.BufferBack(), [&](std::span<const char> bytes) {
                    comparison.Take(bytes, OffsetOf(output, *self, scene));
                    if (out) {
                        out->Write(bytes);
                    }
                });
            WaveInput& input = *recording;
            self = &input;
            if (page) {
                page->Watch(output, false);
                page->Watch(input, comparison);
            }
            input.PrepareBuffers(RecordingBuffers(options), options.BufferMilliseconds);
            runner.Add(std::move(recording));
            runner.Add(std::move(playing));
            runner.Add(comparison);
            if (out) {
                runner.Add(*out);
            }
            if (capture) {
                capture->Begin(scene, options.Device, format.Format().nSamplesPerSec);
                runner.Add(*capture);
            }
            RunBoth(runner, input, scene);

            if (out) {
                out->Finish();
            }
            if (capture) {
                capture->Finish();
            }
            comparison.Finish();
            AddStream(outcome, options.Device, StreamKind::Playing, runner.Reports()[1],
                      scene.HasSimulator());
            AddStream(outcome, options.Device, StreamKind::Recording, runner.Reports()[0],
                      scene.HasSimulator());
            AddComparison(outcome, comparison);
        });
}

}  // namespace kestvox
