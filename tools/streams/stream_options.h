// How streams are run, as written on the command line.
#pragma once

#include <optional>
#include <string>

#include "tools/machine/scene.h"

namespace kestvox {

// What the commands that run streams have in common.
struct StreamOptions {
    SceneOptions Scene;
    std::string Setup;  // the file that some of the rest comes from; empty: none
    unsigned Buffers = 8;
    unsigned BufferMilliseconds = 50;
    std::optional<double> SuspendAt;  // seconds of the first stream: the computer sleeps and wakes there
    std::string Trace;                // empty: none
    std::string CapturePattern;       // a path with a '*', for what each output plays; empty: none
    std::string Page;                 // where to write a page about the run; empty: none
    bool Quiet = false;               // no progress line
    bool Json = false;                // the report as one JSON object
    bool Tolerate = false;            // a loss does not fail the command
};

}  // namespace kestvox
