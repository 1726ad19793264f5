#include <charconv>
#include <filesystem>
#include <memory>
#include <utility>

#include "tools/command_error.h"
#include "tools/commands/commands.h"
#include "tools/commands/stream_command.h"
#include "tools/files/wav_reader.h"
#include "tools/streams/capture_file.h"
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

std::string CaptureOf(const PlayOptions& options, unsigned device) {
    return options.Capture.empty() ? CapturePathOfPattern(options.CapturePattern, device)
                                   : CapturePath(options.Capture, device, options.Devices.size());
}

FileRoles RolesOf(const PlayOptions& options) {
    FileRoles roles;
    for (const std::string& file : options.Files) {
        roles.Read.push_back({"FILE", file});
    }
    const bool captures = !options.Capture.empty() || !options.CapturePattern.empty();
    for (size_t i = 0; captures && i < options.Devices.size(); ++i) {
        roles.Written.push_back({"--capture", CaptureOf(options, options.Devices[i])});
    }
    return roles;
}

// One for each device.
std::vector<WavReader> OpenFiles(const PlayOptions& options) {
    std::vector<WavReader> files;
    for (size_t i = 0; i < options.Devices.size(); ++i) {
        files.emplace_back(FileOf(options, i));
        if (files.back().IsPipe() && options.Files.size() < options.Devices.size()) {
            throw CommandError(FileOf(options, i) + ": cannot be read once for each device");
        }
    }
    return files;
}

// All devices are open before the first gets its buffers.
void AddOutputs(const PlayOptions& options, std::vector<WavReader> files, StreamRunner& runner,
                PageFile* page) {
    std::vector<std::unique_ptr<WaveOutput>> outputs;
    for (size_t i = 0; i < options.Devices.size(); ++i) {
        outputs.push_back(
            std::make_unique<WaveOutput>(options.Devices[i], std::move(files[i]), runner.BufferBack()));
    }
    for (auto& output : outputs) {
        if (options.Volume) {
            output->SetVolume(*options.Volume);
        }
        if (page) {
            page->Watch(*output, options.Passes > 1);
        }
        output->PrepareBuffers(options.Buffers, options.BufferMilliseconds, options.Passes);
        runner.Add(std::move(output));
    }
}

}  // namespace

int Play(const PlayOptions& options) {
    RequireFileForEachDevice(options);
    const FileRoles roles = RolesOf(options);
    RequireDifferentFiles(roles, options);
    std::vector<WavReader> files = OpenFiles(options);
    std::vector<std::unique_ptr<CaptureFile>> captures;
    for (const NamedFile& file : roles.Written) {
        captures.push_back(std::make_unique<CaptureFile>(file.Path));
    }
    return RunStreams("play", options, roles,
                      [&](Scene& scene, StreamRunner& runner, Outcome& outcome, PageFile* page) {
                          for (size_t i = 0; i < captures.size(); ++i) {
                              captures[i]->Begin(scene, options.Devices[i], files[i].Format().nSamplesPerSec);
                              runner.Add(*captures[i]);
                          }
                          AddOutputs(options, std::move(files), runner, page);
                          runner.Start();
                          runner.RunToTheEnd();
                          runner.Close();
                          for (size_t i = 0; i < options.Devices.size(); ++i) {
                              AddStream(outcome, options.Devices[i], StreamKind::Playing, runner.Reports()[i],
                                        scene.HasSimulator());
                          }
                          for (const auto& capture : captures) {
                              capture->Finish();
                          }
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
    std::error_code error;
    const std::filesystem::file_status there = std::filesystem::status(whole, error);
    if (std::filesystem::is_character_file(there)) {
        return path;
    }
    if (path == "-" || (std::filesystem::exists(there) && !std::filesystem::is_regular_file(there))) {
        throw CommandError(path + ": cannot take what several devices play");
    }
    std::filesystem::path name = whole.stem();
    name += "-" + std::to_string(device);
    name += whole.extension();
    return (whole.parent_path() / name).string();
}

std::string CapturePathOfPattern(const std::string& pattern, unsigned device) {
    std::string path = pattern;
    return path.replace(path.find('*'), 1, std::to_string(device / 2) + (device % 2 ? "d-1" : "a-1"));
}

}  // namespace kestvox
