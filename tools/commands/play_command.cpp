#include <charconv>
#include <filesystem>
#include <memory>
#include <utility>

#include "tools/command_error.h"
#include "tools/commands/commands.h"
#include "tools/commands/stream_command.h"
#include "tools/files/output_file.h"
#include "tools/files/wav_file.h"
#include "tools/streams/wave_output.h"

namespace kestvox {
namespace {

void RequireFileForEachDevice(const PlayOptions& options) {
    if (options.Files.size() != 1 && options.Files.size() != options.Devices.size()) {
        throw CommandError(std::to_string(options.Files.size()) + " files for " +
                           std::to_string(options.Devices.size()) +
                           (options.Devices.size() == 1 ? " device" : " devices") +
                           ": give one file for all, or one for each");
    }
}

const std::string& FileOf(const PlayOptions& options, size_t device) {
    return options.Files[options.Files.size() == 1 ? 0 : device];
}

// All devices are open before the first gets its buffers.
void AddOutputs(const PlayOptions& options, StreamRunner& runner) {
    std::vector<std::unique_ptr<WaveOutput>> outputs;
    for (size_t i = 0; i < options.Devices.size(); ++i) {
        outputs.push_back(
            std::make_unique<WaveOutput>(options.Devices[i], FileOf(options, i), runner.BufferBack()));
    }
    for (auto& output : outputs) {
        if (options.Volume) {
            output->SetVolume(*options.Volume);
        }
        output->PrepareBuffers(options.Buffers, options.BufferMilliseconds, options.Passes);
        runner.Add(std::move(output));
    }
}

void WriteCapture(OutputFile& file, Scene& scene, unsigned device, const std::string& played) {
    const simulator::Port port = device % 2 ? simulator::Port::Digital : simulator::Port::Analog;
    WriteWav(file.Stream(), WavReader(played).Format().nSamplesPerSec, scene.Cards().Heard(device / 2, port));
    file.Commit();
}

}  // namespace

int Play(const PlayOptions& options) {
    RequireFileForEachDevice(options);
    for (const std::string& file : options.Files) {
        WavReader check(file);
    }
    std::vector<std::unique_ptr<OutputFile>> captures;
    for (size_t i = 0; !options.Capture.empty() && i < options.Devices.size(); ++i) {
        captures.push_back(std::make_unique<OutputFile>(
            CapturePath(options.Capture, options.Devices[i], options.Devices.size())));
    }
    return RunStreams(options, [&](Scene& scene, StreamRunner& runner) {
        if (!captures.empty()) {
            scene.Cards();
        }
        AddOutputs(options, runner);
        runner.Start();
        runner.RunToTheEnd();
        runner.Close();
        for (size_t i = 0; i < options.Devices.size(); ++i) {
            PrintReport(options.Devices[i], runner.Reports()[i], "frames-played", "silent-frames");
        }
        for (size_t i = 0; i < captures.size(); ++i) {
            WriteCapture(*captures[i], scene, options.Devices[i], FileOf(options, i));
        }
        return runner.FirstProblem();
    });
}

WORD ParseVolume(const std::string& text) {
    constexpr unsigned Full = 65535;
    const bool percent = text.ends_with('%');
    const unsigned most = percent ? 100 : Full;
    const char* end = text.data() + text.size() - (percent ? 1 : 0);
    unsigned value = 0;
    const auto [parsed, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc{} || parsed != end || value > most) {
        throw CommandError("volume " + text + ": must be 0 to 65535, or 0% to 100%");
    }
    return static_cast<WORD>(percent ? (value * Full + 50) / 100 : value);
}

std::string CapturePath(const std::string& path, unsigned device, size_t count) {
    if (count == 1) {
        return path;
    }
    const std::filesystem::path whole(path);
    std::filesystem::path name = whole.stem();
    name += "-" + std::to_string(device);
    name += whole.extension();
    return (whole.parent_path() / name).string();
}

}  // namespace kestvox
