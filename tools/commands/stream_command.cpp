#include "tools/commands/stream_command.h"

#include <cstdio>
#include <memory>

#include "tools/streams/trace_file.h"
#include "tools/system/interrupt.h"
#include "tools/system/message.h"

namespace kestvox {
namespace {

struct StreamWords {
    const char* Frames;
    const char* UnusedHeaders;
    const char* IdleFrames;
    const char* Gaps;
    const char* LongestGap;
    const char* FirstGap;
    const char* CameBackUnused;  // in sentences
    const char* GapSingular;
    const char* IdleFramesInWords;
};

constexpr StreamWords Words[] = {
    {"frames-played", "headers-unplayed", "silent-frames", "underruns", "longest-underrun", "first-underrun",
     "unplayed", "underrun", "silent frames"},
    {"frames-recorded", "headers-unfilled", "dropped-frames", "overruns", "longest-overrun", "first-overrun",
     "unfilled", "overrun", "dropped frames"},
};

std::string Count(uint64_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

void AddGaps(Outcome& outcome, const std::string& device, const StreamWords& words,
             const StreamStatus& status) {
    const simulator::Gaps& gaps = status.Gaps;
    const std::optional<uint64_t> first = gaps.Count != 0 ? std::optional(gaps.First) : std::nullopt;
    outcome.Report.Add(words.Gaps, gaps.Count);
    outcome.Report.Add(words.LongestGap, gaps.Longest);
    outcome.Report.Add(words.FirstGap, first);
    if (first) {
        outcome.Losses.push_back(device + Count(gaps.Count, words.GapSingular) + " (" +
                                 std::to_string(status.IdleFrames) + " " + words.IdleFramesInWords +
                                 " in all), the longest " + Count(gaps.Longest, "frame") +
                                 ", the first at frame " + std::to_string(*first));
    }
}

void AddUnreachedFaults(Outcome& outcome, const Scene& scene) {
    for (const std::string& fault : scene.UnreachedFaults()) {
        outcome.Losses.push_back(fault);
    }
}

void Print(const char* command, const StreamOptions& options, const FileRoles& files, const Outcome& outcome,
           int status) {
    std::FILE* out = UsesStandardOutput(files) ? stderr : stdout;
    if (options.Json) {
        std::fprintf(out, "%s\n",
                     outcome.Report.Json(command, outcome.Problem, outcome.Losses, status).c_str());
    } else {
        outcome.Report.PrintText(out);
    }
    if (!outcome.Problem.empty()) {
        PrintProblem(outcome.Problem);
    } else if (status == ExitFailed) {
        for (const std::string& loss : outcome.Losses) {
            PrintProblem(loss);
        }
    }
}

void AddCommonFiles(FileRoles& files, const StreamOptions& options) {
    if (!options.Trace.empty()) {
        files.Written.push_back({"--trace", options.Trace});
    }
    if (!options.Page.empty()) {
        files.Written.push_back({"--report", options.Page});
    }
}

void SendRequests(Scene& scene, TraceFile* trace, RunPage* page) {
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
    const bool failed = !outcome.Problem.empty() || (!outcome.Losses.empty() && !options.Tolerate);
    return failed ? ExitFailed : ExitSuccess;
}

// The exit status once the page is written, or could not be.
int WritePage(RunPage& page, const char* command, const StreamOptions& options, Outcome& outcome,
              int status) {
    page.Finish({.Command = command,
                 .Problem = outcome.Problem,
                 .Losses = outcome.Losses,
                 .Status = status,
                 .Json = outcome.Report.Json(command, outcome.Problem, outcome.Losses, status)});
    if (outcome.Problem.empty() && status <= ExitRefused) {
        outcome.Problem = page.Problem();
    }
    return StatusOf(options, outcome);
}

}  // namespace

void AddStream(Outcome& outcome, unsigned number, StreamKind kind, const StreamRunner::Report& report,
               bool cardsAreSeen) {
    const StreamWords& words = Words[kind == StreamKind::Playing ? 0 : 1];
    const StreamStatus& status = report.Status;
    const std::string device = "device " + std::to_string(number) + ": ";
    kestvox::Report& lines = outcome.Report;
    lines.BeginStream();
    lines.Add("device", number);
    lines.Add(words.Frames, status.Frames);
    if (kind == StreamKind::Playing && report.FrameCount) {
        const uint64_t left = *report.FrameCount - std::min(*report.FrameCount, status.Frames);
        lines.Add("frames-unplayed", left);
        if (left != 0) {
            outcome.Losses.push_back(device + Count(left, "frame") + (left == 1 ? " was" : " were") +
                                     " not played");
        }
    }
    lines.Add("headers-returned", report.HeadersReturned);
    if (cardsAreSeen) {
        lines.Add(words.UnusedHeaders, report.HeadersUnused);
        if (report.HeadersUnused != 0) {
            outcome.Losses.push_back(device + Count(report.HeadersUnused, "header") + " came back " +
                                     words.CameBackUnused);
        }
    }
    lines.Add("most-in-flight", status.MostInFlight);
    lines.Add("start-frame", status.StartFrame);
    lines.Add(words.IdleFrames, status.IdleFrames);
    if (cardsAreSeen) {
        AddGaps(outcome, device, words, status);
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
    const std::unique_ptr<RunPage> page =
        options.Page.empty() ? nullptr : std::make_unique<RunPage>(options.Page);
    Outcome outcome;
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
            }
            if (page) {
                runner.Add(*page);
            }
            work(scene, runner, outcome, page.get());
            outcome.Problem = runner.FirstProblem();
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
            outcome.Problem = outcome.Problem.empty() ? trace->Problem() : outcome.Problem;
        }
    }
    int status = StatusOf(options, outcome);
    if (status > ExitRefused) {
        outcome.Problem.clear();
    }
    if (page) {
        status = WritePage(*page, command, options, outcome, status);
    }
    Print(command, options, files, outcome, status);
    return status;
}

}  // namespace kestvox
