// The frame around the commands that run streams: the scene, the trace, the exit status.
#pragma once

#include <functional>
#include <string>

#include "tools/commands/commands.h"
#include "tools/streams/stream_runner.h"

namespace kestvox {

// Runs streams, prints the summary of them, and answers what went wrong, or nothing.
using StreamWork = std::function<std::string(Scene& scene, StreamRunner& runner)>;

// Puts up the scene, lets `work` do its part, adds to the summary and writes the trace. Answers the exit
// status.
int RunStreams(const StreamOptions& options, const StreamWork& work);

// The lines of the summary that every stream has; `frames` and `idle` name what it counts.
void PrintReport(unsigned device, const StreamRunner::Report& report, const char* frames, const char* idle);

}  // namespace kestvox
