#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <memory>
#include <utility>

#include "tools/command_error.h"
#include "tools/commands/commands.h"
#include "tools/commands/stream_command.h"
#include "tools/files/output_file.h"
#include "tools/files/wav_file.h"
#include "tools/files/wave_format.h"
#include "tools/streams/wave_input.h"

namespace kestvox {
namespace {

constexpr double DefaultSeconds = 5;
constexpr int32_t ToneAmplitude = 0x40000000;

constexpr SampleEncoding Formats[] = {
    {"u8", WAVE_FORMAT_PCM, 8, 1, 0},   {"s16", WAVE_FORMAT_PCM, 16, 2, 0},
    {"s20", WAVE_FORMAT_PCM, 20, 3, 0}, {"s24", WAVE_FORMAT_PCM, 24, 3, 0},
    {"s32", WAVE_FORMAT_PCM, 32, 4, 0}, {"s24in32", WAVE_FORMAT_EXTENSIBLE, 32, 4, 24},
};

WAVEFORMATEXTENSIBLE RecordingFormat(const RecordOptions& options) {
    const auto* encoding = std::ranges::find_if(
        Formats, [&](const SampleEncoding& known) { return options.Format == known.Name; });
    if (encoding == std::end(Formats)) {
        throw CommandError("format " + options.Format + ": there is no such format");
    }
    return MakeFormat(*encoding, options.Channels, options.Rate);
}

simulator::InputSignal ToneSignal(const std::string& input, const std::string& hertz) {
    double value = 0;
    const char* end = hertz.data() + hertz.size();
    const auto [parsed, error] = std::from_chars(hertz.data(), end, value);
    if (error != std::errc{} || parsed != end || !(value > 0) || !std::isfinite(value)) {
        throw CommandError("input " + input + ": must be tone:HZ, with a frequency above 0");
    }
    return simulator::InputSignal::Tone(value, ToneAmplitude);
}

simulator::InputSignal FileSignal(const RecordOptions& options) {
    WavReader reader(options.Input);
    if (const DWORD rate = reader.Format().nSamplesPerSec; rate != options.Rate) {
        throw CommandError(options.Input + ": has " + std::to_string(rate) + " Hz, the recording " +
                           std::to_string(options.Rate) + " Hz");
    }
    return simulator::InputSignal::Run(ReadFrames(reader, options.Input));
}

simulator::InputSignal ParseInput(const RecordOptions& options) {
    constexpr const char* Tone = "tone:";
    if (options.Input == "silence") {
        return simulator::InputSignal::Silence();
    }
    if (options.Input.starts_with(Tone)) {
        return ToneSignal(options.Input, options.Input.substr(std::string(Tone).size()));
    }
    return FileSignal(options);
}

uint64_t FramesToRecord(const RecordOptions& options, const simulator::InputSignal& signal) {
    if (!options.Seconds && !signal.Frames.empty()) {
        return signal.Frames.size();
    }
    return std::max<uint64_t>(1,
                              static_cast<uint64_t>(options.Seconds.value_or(DefaultSeconds) * options.Rate));
}

RecordOptions WithDitherStored(RecordOptions options) {
    if (options.Dither) {
        options.Scene.Settings.push_back(std::to_string(options.Device / 2) +
                                         ":DitherADC=" + std::to_string(*options.Dither));
    }
    return options;
}

}  // namespace

int Record(const RecordOptions& asked) {
    const RecordOptions options = WithDitherStored(asked);
    const WAVEFORMATEXTENSIBLE format = RecordingFormat(options);
    simulator::InputSignal signal = ParseInput(options);
    const uint64_t frames = FramesToRecord(options, signal);
    OutputFile file(options.File);
    WavWriter writer(file.Stream(), format.Format);

    return RunStreams(options, [&](Scene& scene, StreamRunner& runner) {
        scene.PlugIn(options.Device, std::move(signal));
        auto owned = std::make_unique<WaveInput>(options.Device, format.Format, runner.BufferBack(),
                                                 [&](std::span<const char> bytes) { writer.Write(bytes); });
        const WaveInput& input = *owned;
        owned->PrepareBuffers(options.Buffers, options.BufferMilliseconds);
        owned->SetFrameCount(frames);
        runner.Add(std::move(owned));
        runner.Start();
        runner.RunToTheEnd();
        runner.Close();

        writer.Finish();
        file.Commit();
        StreamRunner::Report report = runner.Reports().front();
        report.Status.Frames = input.FramesTaken();
        PrintReport(options.Device, report, "frames-recorded", "dropped-frames");
        return runner.FirstProblem();
    });
}

std::vector<std::string> RecordFormats() {
    std::vector<std::string> names;
    for (const SampleEncoding& format : Formats) {
        names.emplace_back(format.Name);
    }
    return names;
}

}  // namespace kestvox
