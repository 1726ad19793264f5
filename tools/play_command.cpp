#include <charconv>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "simulator/trace.h"
#include "tools/command_error.h"
#include "tools/commands.h"
#include "tools/output_file.h"
#include "tools/performance.h"
#include "tools/wav_file.h"

namespace kestvox {
namespace {

volatile std::sig_atomic_t interrupted = 0;

void OnInterrupt(int) {
    interrupted = 1;
}

class InterruptGuard {
public:
    InterruptGuard() : previous_(std::signal(SIGINT, OnInterrupt)) { interrupted = 0; }
    ~InterruptGuard() { std::signal(SIGINT, previous_); }
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

private:
    void (*previous_)(int);
};

void RequireFileForEachDevice(const PlayOptions& options) {
    if (options.Files.size() != 1 && options.Files.size() != options.Devices.size()) {
        throw CommandError(std::to_string(options.Files.size()) + " files for " +
                           std::to_string(options.Devices.size()) +
                           (options.Devices.size() == 1 ? " device" : " devices") +
                           ": give one file for all, or one for each");
    }
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
    std::unique_ptr<OutputFile> trace;
    if (!options.Trace.empty()) {
        trace = std::make_unique<OutputFile>(options.Trace);
    }

    const InterruptGuard interrupts;
    Scene scene(options.Scene);
    std::string problem;
    {
        Performance performance(options, scene);
        performance.Start();
        performance.PlayToTheEnd(&interrupted);
        performance.Close();
        performance.WriteCaptures(captures);
        performance.PrintSummary();
        problem = performance.FirstProblem();
    }
    const std::vector<simulator::TraceEntry> entries = scene.Cards().Trace();
    std::printf("requests-sent: %zu\n", entries.size());
    if (trace) {
        simulator::WriteChromeTrace(trace->Stream(), entries);
        trace->Commit();
    }
    if (interrupted) {
        return ExitInterrupted;
    }
    if (!problem.empty()) {
        std::fprintf(stderr, "kestvox: %s\n", problem.c_str());
        return ExitFailed;
    }
    return ExitSuccess;
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
