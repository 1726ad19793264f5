// The file of --setup, which sets the scene in place of options.
#pragma once

#include <string>
#include <vector>

#include "simulator/connectors/scene_setup.h"
#include "simulator/connectors/scene_syntax.h"

namespace kestvox {

// CommandError when the file cannot be read, or has a line that makes no sense.
std::vector<simulator::SetupLine> ReadSetupFile(const std::string& path);

// The parts of a line's value. CommandError, with the line's place, when one of them makes no sense.
struct PluggedOption {
    std::optional<simulator::Connector> Where;  // nothing: every input of every card
    std::string What;                           // "silence", "tone:HZ", or a WAV file
    std::string Place;                          // of the line
};
std::vector<PluggedOption> ParseInputs(const simulator::SetupLine& line);

struct CableOption {
    simulator::CableEnds Ends;
    std::string Place;
};
std::vector<CableOption> ParseCables(const simulator::SetupLine& line);

std::vector<std::string> ParseFaults(const simulator::SetupLine& line);

// A file's path with one '*' in its name.
std::string ParseCapturePattern(const simulator::SetupLine& line);

}  // namespace kestvox
