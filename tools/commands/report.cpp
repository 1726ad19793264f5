#include "tools/commands/report.h"

#include <utility>

namespace kestvox {
namespace {

std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (static_cast<unsigned char>(c) < ' ') {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04X", static_cast<unsigned>(c));
            quoted += escape;
        } else {
            quoted += c;
        }
    }
    return quoted + "\"";
}

template <typename Items, typename Show>
std::string List(const Items& items, Show show) {
    std::string text;
    for (const auto& item : items) {
        text += (text.empty() ? "" : ", ") + show(item);
    }
    return text;
}

}  // namespace

void Report::BeginStream() {
    ofStream_ = true;
    streams_.emplace_back();
}

void Report::Add(const char* key, uint64_t value) {
    AddLine(key, std::to_string(value), std::to_string(value));
}

void Report::Add(const char* key, int64_t value) {
    AddLine(key, std::to_string(value), std::to_string(value));
}

void Report::AddLine(const char* key, std::string text, std::string json) {
    (ofStream_ ? streams_.back() : rest_).push_back({key, std::move(text), std::move(json)});
}

void Report::PrintText(std::FILE* out) const {
    const auto print = [out](const Lines& lines) {
        for (const Line& line : lines) {
            std::fprintf(out, "%s: %s\n", line.Key, line.Text.c_str());
        }
    };
    for (const Lines& stream : streams_) {
        print(stream);
    }
    print(rest_);
}

void Report::PrintJson(std::FILE* out, const std::string& command, const std::string& problem,
                       const std::vector<std::string>& losses, int status) const {
    const auto member = [](const Line& line) { return Quoted(line.Key) + ": " + line.Json; };
    const auto object = [&](const Lines& lines) { return "{" + List(lines, member) + "}"; };
    std::string text = "{\"command\": " + Quoted(command);
    text += ", \"streams\": [" + List(streams_, object) + "]";
    for (const Line& line : rest_) {
        text += ", " + member(line);
    }
    text += ", \"problem\": " + (problem.empty() ? "null" : Quoted(problem));
    text += ", \"losses\": [" + List(losses, Quoted) + "]";
    std::fprintf(out, "%s, \"status\": %d}\n", text.c_str(), status);
}

}  // namespace kestvox
