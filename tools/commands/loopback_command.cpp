#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>

#include "tools/commands/commands.h"
#include "tools/commands/stream_command.h"
#include "tools/files/output_file.h"
#include "tools/files/wav_file.h"
#include "tools/streams/interrupt.h"
#include "tools/streams/wave_input.h"
#include "tools/streams/wave_output.h"

namespace kestvox {
namespace {

using Bytes = std::vector<char>;

constexpr DWORD HeadStartMilliseconds = 10;

Bytes ReadSamples(const std::string& path) {
    WavReader reader(path);
    Bytes bytes(static_cast<size_t>(reader.ByteCount()));
    reader.Read(bytes);
    return bytes;
}

// Where the played frames lie in the recording, and how many samples are not there.
struct Comparison {
    std::optional<int64_t> Offset;  // frames; nothing: one of the two never began
    uint64_t SamplesLost;
};

std::optional<int64_t> FindWhole(const Bytes& played, const Bytes& recorded, size_t frameSize) {
    for (size_t at = 0; at + played.size() <= recorded.size(); at += frameSize) {
        if (std::memcmp(&recorded[at], played.data(), played.size()) == 0) {
            return static_cast<int64_t>(at / frameSize);
        }
    }
    return std::nullopt;
}

// Sample by sample, with the first played frame at the frame `offset` of the recording.
uint64_t CountLost(const Bytes& played, const Bytes& recorded, const WAVEFORMATEX& format, int64_t offset) {
    const size_t size = size_t{format.nBlockAlign} / format.nChannels;
    uint64_t lost = 0;
    for (size_t at = 0; at + size <= played.size(); at += size) {
        const int64_t there = static_cast<int64_t>(at) + offset * format.nBlockAlign;
        const bool came = there >= 0 && static_cast<size_t>(there) + size <= recorded.size() &&
                          std::memcmp(&recorded[static_cast<size_t>(there)], &played[at], size) == 0;
        lost += came ? 0 : 1;
    }
    return lost;
}

// When not all came back, the clock tells where it should have been.
Comparison Compare(const Bytes& played, const Bytes& recorded, const WAVEFORMATEX& format,
                   const StreamStatus& output, const StreamStatus& input) {
    if (const std::optional<int64_t> offset = FindWhole(played, recorded, format.nBlockAlign)) {
        return {.Offset = offset, .SamplesLost = 0};
    }
    if (!output.StartFrame || !input.StartFrame) {
        return {.Offset = {}, .SamplesLost = played.size() / format.nBlockAlign * format.nChannels};
    }
    const auto offset = static_cast<int64_t>(*output.StartFrame - *input.StartFrame);
    return {.Offset = offset, .SamplesLost = CountLost(played, recorded, format, offset)};
}

LoopbackOptions WithRecordModeStored(LoopbackOptions options) {
    options.Scene.Settings.push_back(std::string("Punchin=") + (options.Lock ? "0" : "1"));
    return options;
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

std::string PrintComparison(const Comparison& comparison) {
    const std::string offset = comparison.Offset ? std::to_string(*comparison.Offset) : "none";
    std::printf("offset-frames: %s\n", offset.c_str());
    std::printf("samples-lost: %llu\n", static_cast<unsigned long long>(comparison.SamplesLost));
    return comparison.SamplesLost == 0
               ? ""
               : std::to_string(comparison.SamplesLost) + " samples did not come back as they were played";
}

}  // namespace

int Loopback(const LoopbackOptions& asked) {
    const LoopbackOptions options = WithRecordModeStored(asked);
    const Bytes played = ReadSamples(options.File);
    const WavReader file(options.File);
    std::unique_ptr<OutputFile> out;
    if (!options.Out.empty()) {
        out = std::make_unique<OutputFile>(options.Out);
    }
    Bytes recorded;

    return RunStreams(options, [&](Scene& scene, StreamRunner& runner) {
        auto output = std::make_unique<WaveOutput>(options.Device, options.File, runner.BufferBack());
        output->PrepareBuffers(options.Buffers, options.BufferMilliseconds, 1);
        scene.PlugIn(options.Device, simulator::InputSignal::Cable(output->Card(), output->Port()));
        auto owned = std::make_unique<WaveInput>(
            options.Device, file.Format(), runner.BufferBack(), [&](std::span<const char> bytes) {
                recorded.insert(recorded.end(), bytes.begin(), bytes.end());
            });
        WaveInput& input = *owned;
        input.PrepareBuffers(options.Buffers, options.BufferMilliseconds);
        runner.Add(std::move(owned));
        runner.Add(std::move(output));
        RunBoth(runner, input, scene);

        if (out) {
            WavWriter writer(out->Stream(), file.Format());
            writer.Write(recorded);
            writer.Finish();
            out->Commit();
        }
        const StreamRunner::Report& recording = runner.Reports()[0];
        const StreamRunner::Report& playing = runner.Reports()[1];
        PrintReport(options.Device, playing, "frames-played", "silent-frames");
        PrintReport(options.Device, recording, "frames-recorded", "dropped-frames");
        const std::string lost =
            PrintComparison(Compare(played, recorded, file.Format(), playing.Status, recording.Status));
        return runner.FirstProblem().empty() ? lost : runner.FirstProblem();
    });
}

}  // namespace kestvox
