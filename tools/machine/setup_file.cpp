#include "tools/machine/setup_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "simulator/trace/fault.h"
#include "tools/command_error.h"

namespace kestvox {
namespace {

[[noreturn]] void Refuse(const simulator::SetupLine& line, const std::string& must) {
    throw CommandError(line.Place + ": " + line.Key + " must be " + must + ": " + line.Value);
}

// `parse` makes an element of each part, or nothing.
template <typename Element, typename Parse>
std::vector<Element> ParseList(const simulator::SetupLine& line, const char* separators,
                               const std::string& must, const Parse& parse) {
    std::vector<Element> list;
    for (const std::string_view part : simulator::SplitList(line.Value, separators)) {
        std::optional<Element> element = parse(part);
        if (!element) {
            Refuse(line, must);
        }
        list.push_back(std::move(*element));
    }
    if (list.empty()) {
        Refuse(line, must);
    }
    return list;
}

}  // namespace

std::vector<simulator::SetupLine> ReadSetupFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    if (!file || !text) {
        throw CommandError(path + ": cannot read: " + std::strerror(errno != 0 ? errno : EIO));
    }
    std::string why;
    std::optional<std::vector<simulator::SetupLine>> lines = simulator::ParseSetup(text.str(), path, &why);
    if (!lines) {
        throw CommandError(why);
    }
    return std::move(*lines);
}

// What is neither of the words is a file, which is looked at when it is plugged in.
std::vector<PluggedOption> ParseInputs(const simulator::SetupLine& line) {
    return ParseList<PluggedOption>(
        line, ";", "silence, tone:HZ or a WAV file, for one input as 0a=..., for several with ';' between",
        [&](std::string_view part) -> std::optional<PluggedOption> {
            const auto [where, what] = simulator::ParsePlugged(part);
            const bool isTone = what.starts_with("tone:");
            if (what.empty() || (isTone && !simulator::ParseSignal(what))) {
                return std::nullopt;
            }
            return PluggedOption{where, std::string(what), line.Place};
        });
}

std::vector<CableOption> ParseCables(const simulator::SetupLine& line) {
    return ParseList<CableOption>(
        line, ",;", "OUTPUT>INPUT,... as in 0a>0a,0d>1d",
        [&](std::string_view part) -> std::optional<CableOption> {
            const auto ends = simulator::ParseCable(part);
            return ends ? std::optional(CableOption{*ends, line.Place}) : std::nullopt;
        });
}

std::vector<std::string> ParseFaults(const simulator::SetupLine& line) {
    return ParseList<std::string>(
        line, ",;", "faults as kestvox play --help tells, with ',' between", [](std::string_view part) {
            return simulator::ParseFault(part) ? std::optional(std::string(part)) : std::nullopt;
        });
}

std::string ParseCapturePattern(const simulator::SetupLine& line) {
    namespace fs = std::filesystem;
    std::error_code error;
    fs::path path(line.Value);
    if (fs::is_directory(path, error)) {
        path /= "*.wav";
    }
    const std::string name = path.filename().string();
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    if (std::ranges::count(path.string(), '*') != 1 || name.find('*') == std::string::npos ||
        !fs::is_directory(folder, error)) {
        Refuse(line, "a folder that is there, or a file in one with one '*' in its name");
    }
    return path.string();
}

}  // namespace kestvox
