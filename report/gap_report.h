// What a report says of the times in which a card wanted a buffer and had none.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "report/report.h"
#include "report/stream_watch.h"
#include "simulator/simulator.h"

namespace kestvox {

// Adds the lines to the report's stream and, when there were such times, one line to the losses that begins
// with `stream`. `idleFrames`: all that passed without a buffer.
void AddGaps(Report& report, std::vector<std::string>& losses, const std::string& stream, StreamKind kind,
             uint64_t idleFrames, const simulator::Gaps& gaps);

// "1 frame", "2 frames".
std::string Counted(uint64_t count, const std::string& what);

}  // namespace kestvox
