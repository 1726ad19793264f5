// The frame around the commands that run streams: the scene, the trace, the report, the exit status.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "report/report.h"
#include "tools/commands/commands.h"
#include "tools/files/file_roles.h"
#include "tools/streams/page_file.h"
#include "tools/streams/stream_runner.h"

namespace kestvox {

// What came of the streams.
struct Outcome {
    kestvox::Report Report;
    RunOutcome Run;
};

// Adds what the stream did, and what it lost.
void AddStream(Outcome& outcome, unsigned device, StreamKind kind, const StreamRunner::Report& report,
               bool cardsAreSeen);

// CommandError when two options name one file; `files` are those of the command, trace and page not among
// them.
void RequireDifferentFiles(FileRoles files, const StreamOptions& options);

// `page` is to watch the streams; null: no page is wanted.
using StreamWork = std::function<void(Scene& scene, StreamRunner& runner, Outcome& outcome, PageFile* page)>;

// Puts up the scene, lets `work` run its streams and tell of them, adds what the cards were asked, prints it
// all, and answers the exit status. A loss fails the command unless losses are tolerated. The report goes to
// the standard output unless one of the files does.
int RunStreams(const char* command, const StreamOptions& options, FileRoles files, const StreamWork& work);

}  // namespace kestvox
