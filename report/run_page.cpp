#include "report/run_page.h"

#include <algorithm>
#include <string_view>

#include "report/json_text.h"
#include "report/page_template.h"

namespace kestvox {
namespace {

constexpr size_t MostColumns = 2000;  // of one stream
constexpr size_t FewestColumns = 250;
constexpr size_t ColumnsOfAll = 8000;
constexpr int HighestStatusByItself = 2;  // above it: a signal

// The text before the mark, and what takes the mark's place; the text is left with what follows.
std::string Fill(std::string_view& text, std::string_view mark, const std::string& with) {
    const size_t at = text.find(mark);
    std::string filled = std::string(text.substr(0, at)) + with;
    text.remove_prefix(at + mark.size());
    return filled;
}

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        escaped += c == '&' ? "&amp;" : c == '<' ? "&lt;" : std::string(1, c);
    }
    return escaped;
}

// Nothing in it ends the script that it stands in.
std::string InScript(std::string json) {
    for (size_t at = 0; (at = json.find('<', at)) != std::string::npos;) {
        json.replace(at, 1, "\\u003C");
    }
    return json;
}

std::string Paragraph(const std::string& text) {
    return "<p>" + Escaped(text) + "</p>\n";
}

std::string LossesInWords(const RunOutcome& outcome) {
    std::string text;
    if (outcome.Status > HighestStatusByItself) {
        text += Paragraph("The run was told to end before its time.");
    }
    if (!outcome.Problem.empty()) {
        text += Paragraph("The run ended before its time: " + outcome.Problem);
    }
    if (outcome.Losses.empty()) {
        return text.empty() ? Paragraph("Nothing was lost.") : text;
    }
    text += Paragraph(outcome.Status == 0 ? "This was lost, and tolerated:" : "This was lost:") + "<ul>\n";
    for (const std::string& loss : outcome.Losses) {
        text += "<li>" + Escaped(loss) + "</li>\n";
    }
    return text + "</ul>\n";
}

}  // namespace

StreamWatch& RunPage::Watch(const WatchedStream& stream) {
    return *streams_.emplace_back(std::make_unique<StreamWatch>(simulator_, stream));
}

void RunPage::Advance() {
    bool begun = false;
    for (const auto& stream : streams_) {
        begun = stream->Advance() || begun;
    }
    if (begun) {
        cards_.Look();
    }
}

// Many streams share the room that a page has.
void RunPage::End() {
    const size_t share = ColumnsOfAll / std::max<size_t>(1, streams_.size());
    for (const auto& stream : streams_) {
        stream->Close();
        stream->ReduceTo(std::clamp(share, FewestColumns, MostColumns));
    }
    cards_.End();
}

std::string RunPage::WatchedJson() const {
    return "{\"streams\": " + JsonList(streams_, [](const auto& stream) { return stream->Json(); }) +
           ",\n\"requests\": " + requests_.Json() + ",\n\"cards\": " + cards_.Json() + "}";
}

std::string RunPage::Text(const std::string& title, const RunOutcome& outcome, const Report& report) const {
    std::string_view rest = PageTemplate;
    std::string page = Fill(rest, "@TITLE@", Escaped(title));
    page += Fill(rest, "@OUTCOME@", outcome.IsGood() ? "good" : "bad");
    page += Fill(rest, "@LOSSES@", LossesInWords(outcome));
    page += Fill(rest, "@RUN@", InScript(report.Json(outcome)));
    page += Fill(rest, "@WATCHED@", InScript(WatchedJson()));
    page += rest;
    return page;
}

}  // namespace kestvox
