#include "tools/commands/report.h"

#include <utility>

#include "tools/system/json_text.h"

namespace kestvox {
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

std::string Report::Json(const std::string& command, const std::string& problem,
                         const std::vector<std::string>& losses, int status) const {
    const auto member = [](const Line& line) { return QuotedJson(line.Key) + ": " + line.Json; };
    const auto object = [&](const Lines& lines) {
        std::string members;
        for (const Line& line : lines) {
            members += (members.empty() ? "" : ", ") + member(line);
        }
        return "{" + members + "}";
    };
    std::string text = "{\"command\": " + QuotedJson(command);
    text += ", \"streams\": " + JsonList(streams_, object);
    for (const Line& line : rest_) {
        text += ", " + member(line);
    }
    text += ", \"problem\": " + (problem.empty() ? "null" : QuotedJson(problem));
    text += ", \"losses\": " + JsonList(losses, QuotedJson);
    return text + ", \"status\": " + std::to_string(status) + "}";
}

}  // namespace kestvox
