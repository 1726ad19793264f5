#include "tools/commands/stream_command.h"

#include <cstdio>
#include <memory>
#include <vector>

#include "simulator/trace/trace.h"
#include "tools/files/output_file.h"
#include "tools/streams/interrupt.h"

namespace kestvox {

int RunStreams(const StreamOptions& options, const StreamWork& work) {
    std::unique_ptr<OutputFile> trace;
    if (!options.Trace.empty()) {
        trace = std::make_unique<OutputFile>(options.Trace);
    }
    const InterruptGuard interrupts;
    Scene scene(options.Scene);
    if (trace || options.SuspendAt) {
        scene.Cards();
    }
    std::string problem;
    {
        StreamRunner runner(options, scene);
        problem = work(scene, runner);
    }
    if (scene.HasSimulator()) {
        const std::vector<simulator::TraceEntry> entries = scene.Cards().Trace();
        std::printf("requests-sent: %zu\n", entries.size());
        if (trace) {
            simulator::WriteChromeTrace(trace->Stream(), entries);
            trace->Commit();
        }
    }
    if (IsInterrupted()) {
        return ExitInterrupted;
    }
    if (!problem.empty()) {
        std::fprintf(stderr, "kestvox: %s\n", problem.c_str());
        return ExitFailed;
    }
    return ExitSuccess;
}

void PrintReport(unsigned device, const StreamRunner::Report& report, const char* frames, const char* idle) {
    const StreamStatus& status = report.Status;
    const std::string start = status.StartFrame ? std::to_string(*status.StartFrame) : "none";
    std::printf("device: %u\n", device);
    std::printf("%s: %llu\n", frames, static_cast<unsigned long long>(status.Frames));
    std::printf("headers-returned: %u\n", report.HeadersReturned);
    std::printf("most-in-flight: %u\n", status.MostInFlight);
    std::printf("start-frame: %s\n", start.c_str());
    std::printf("%s: %llu\n", idle, static_cast<unsigned long long>(status.IdleFrames));
}

}  // namespace kestvox
