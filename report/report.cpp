#include "report/report.h"

#include <utility>

#include "report/json_text.h"

namespace kestvox {

void Report::BeginStream() {
    ofStream_ = true;
    streams_.emplace_back();
}

void Report::Add(const char* key, const std::string& text) {
    AddLine(key, text, QuotedJson(text));
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

std::string Report::Json(const RunOutcome& outcome) const {
    const auto member = [](const Line& line) { return QuotedJson(line.Key) + ": " + line.Json; };
    const auto object = [&](const Lines& lines) {
        std::string members;
        for (const Line& line : lines) {
            members += (members.empty() ? "" : ", ") + member(line);
        }
        return "{" + members + "}";
    };
    std::string text = outcome.Command ? "{\"command\": " + QuotedJson(*outcome.Command) + ", " : "{";
    text += "\"streams\": " + JsonList(streams_, object);
    for (const Line& line : rest_) {
        text += ", " + member(line);
    }
    text += ", \"problem\": " + (outcome.Problem.empty() ? "null" : QuotedJson(outcome.Problem));
    text += ", \"losses\": " + JsonList(outcome.Losses, QuotedJson);
    return text + (outcome.Status ? ", \"status\": " + std::to_string(*outcome.Status) : "") + "}";
}

}  // namespace kestvox
