#include "tools/commands/stream_command.h"

#include <algorithm>
#include <cstdio>
#include <memory>

#include "report/gap_report.h"
#include "tools/streams/plugged_inputs.h"
#include "tools/streams/trace_file.h"
#include "tools/system/interrupt.h"
#include "tools/system/message.h"

namespace kestvox {
namespace {

struct StreamWords {
    const char* Frames;
    const char* UnusedHeaders;
    const char* IdleFrames;
    const char* CameBackUnused;  // in sentences
};

constexpr StreamWords Words[] = {
    {"frames-played", "headers-unplayed", "silent-frames", "unplayed"},
    {"frames-recorded", "headers-unfilled", "dropped-frames", "unfilled"},
};

void AddUnreachedFaults(Outcome& outcome, const Scene& scene) {
    for (const std::string& fault : scene.UnreachedFaults()) {
        outcome.Run.Losses.push_back(fault);
    }
}

void Print(const StreamOptions& options, const FileRoles& files, const Outcome& outcome) {
    std::FILE* out = UsesStandardOutput(files) ? stderr : stdout;
    if (options.Json) {
        std::fprintf(out, "%s\n", outcome.Report.Json(outcome.Run).c_str());
    } else {
        outcome.Report.PrintText(out);
    }
    if (!outcome.Run.Problem.empty()) {
        PrintProblem(outcome.Run.Problem);
    } else if (outcome.Run.Status == ExitFailed) {
        for (const std::string& loss : outcome.Run.Losses) {
            PrintProblem(loss);
        }
    }
}

void AddCommonFiles(FileRoles& files, const StreamOptions& options) {
    if (!options.Setup.empty()) {
        files.Read.push_back({"--setup", options.Setup});
    }
    for (const PluggedOption& input : options.Scene.Inputs) {
        if (!simulator::ParseSignal(input.What)) {
            files.Read.push_back({"--setup", input.What});
        }
    }
    if (!options.Trace.empty()) {
        files.Written.push_back({"--trace", options.Trace});
    }
    if (!options.Page.empty()) {
        files.Written.push_back({"--report", options.Page});
    }
}

void SendRequests(Scene& scene, TraceFile* trace, PageFile* page) {
    if (!trace && !page) {
        return;
    }
    scene.Cards().SendTrace([=](const simulator::TraceEntry& entry) {
        if (trace) {
            trace->Take(entry);
        }
        if (page) {
            page->Take(entry);
        }
    });
}

int StatusOf(const StreamOptions& options, const Outcome& outcome) {
    if (IsInterrupted()) {
        return InterruptStatus();
    }
    const bool failed = !outcome.Run.Problem.empty() || (!outcome.Run.Losses.empty() && !options.Tolerate);
    return failed ? ExitFailed : ExitSuccess;
}

// The exit status changes when the page cannot be written.
void WritePage(PageFile& page, const StreamOptions& options, Outcome& outcome) {
    page.Finish(outcome.Run, outcome.Report);
    if (outcome.Run.Problem.empty() && outcome.Run.Status <= ExitRefused) {
        outcome.Run.Problem = page.Problem();
    }
    outcome.Run.Status = StatusOf(options, outcome);
}

// What the card played besides all that is in the file; the driver's own count cannot tell.
void AddMoreThanAsked(std::vector<std::string>& losses, const std::string& device,
                      const StreamRunner::Report& report) {
    const uint64_t played = report.Status.Frames;
    if (report.FrameCount && played > *report.FrameCount) {
        losses.push_back(device + ": " + Counted(played - *report.FrameCount, "frame") +
                         " more than asked for");
    }
}

}  // namespace

void AddStream(Outcome& outcome, unsigned number, StreamKind kind, const StreamRunner::Report& report,
               bool cardsAreSeen) {
    const StreamWords& words = Words[kind == StreamKind::Playing ? 0 : 1];
    const StreamStatus& status = report.Status;
    const std::string device = "device " + std::to_string(number);
    kestvox::Report& lines = outcome.Report;
    lines.BeginStream();
    lines.Add("device", number);
    lines.Add(words.Frames, status.Frames);
    if (kind == StreamKind::Playing && report.FrameCount) {
        const uint64_t left = *report.FrameCount - std::min(*report.FrameCount, status.Frames);
        lines.Add("frames-unplayed", left);
        if (left != 0) {
            outcome.Run.Losses.push_back(device + ": " + Counted(left, "frame") +
                                         (left == 1 ? " was" : " were") + " not played");
        }
    }
    lines.Add("headers-returned", report.HeadersReturned);
    if (cardsAreSeen) {
        lines.Add(words.UnusedHeaders, report.HeadersUnused);
        if (report.HeadersUnused != 0) {
            outcome.Run.Losses.push_back(device + ": " + Counted(report.HeadersUnused, "header") +
                                         " came back " + words.CameBackUnused);
        }
    }
    lines.Add("most-in-flight", status.MostInFlight);
    lines.Add("start-frame", status.StartFrame);
    lines.Add(words.IdleFrames, status.IdleFrames);
    if (cardsAreSeen) {
        if (kind == StreamKind::Playing) {
            AddMoreThanAsked(outcome.Run.Losses, device, report);
        }
        AddGaps(lines, outcome.Run.Losses, device, kind, status.IdleFrames, status.Gaps);
    }
}

void RequireDifferentFiles(FileRoles files, const StreamOptions& options) {
    AddCommonFiles(files, options);
    RequireDifferentFiles(files);
}

int RunStreams(const char* command, const StreamOptions& options, FileRoles files, const StreamWork& work) {
    AddCommonFiles(files, options);
    const InterruptGuard interrupts;
    const std::unique_ptr<TraceFile> trace =
        options.Trace.empty() ? nullptr : std::make_unique<TraceFile>(options.Trace);
    const std::unique_ptr<PageFile> page =
        options.Page.empty() ? nullptr : std::make_unique<PageFile>(options.Page);
    PluggedInputs inputs(options.Scene);
    Outcome outcome;
    outcome.Run.Command = command;
    {
        Scene scene(options.Scene);
        if (options.SuspendAt) {
            scene.Cards();
        }
        if (page) {
            page->Begin(scene);
        }
        SendRequests(scene, trace.get(), page.get());
        {
            StreamRunner runner(options, scene);
            if (trace) {
                runner.Add(*trace);
                runner.SendHeadersTo(*trace);
            }
            if (page) {
                runner.Add(*page);
            }
            inputs.PlugIn(scene, runner);
            work(scene, runner, outcome, page.get());
            outcome.Run.Problem = runner.FirstProblem();
        }
        outcome.Report.EndStreams();
        AddUnreachedFaults(outcome, scene);
        if (scene.HasSimulator()) {
            outcome.Report.Add("requests-sent", scene.Cards().RequestCount());
            scene.Cards().SendTrace({});
        }
        if (page) {
            page->End();
        }
        if (trace) {
            trace->Finish();
            outcome.Run.Problem = outcome.Run.Problem.empty() ? trace->Problem() : outcome.Run.Problem;
        }
    }
    outcome.Run.Status = StatusOf(options, outcome);
    if (outcome.Run.Status > ExitRefused) {
        outcome.Run.Problem.clear();
    }
    if (page) {
        WritePage(*page, options, outcome);
    }
    Print(options, files, outcome);
    return *outcome.Run.Status;
}

}  // namespace kestvox
