#include "simulator/connectors/scene_setup.h"

#include <algorithm>
#include <iterator>

namespace simulator {
namespace {

struct SetupKey {
    std::string_view Name;
    bool MayRepeat = false;
};
constexpr SetupKey Keys[] = {
    {"cards"},       {"machine"}, {"time"},  {"input", true}, {"cable", true},
    {"fault", true}, {"capture"}, {"trace"}, {"report"},      {"suspend-at"},
};

constexpr std::string_view Blanks = " \t\r";

std::string_view Trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(Blanks);
    return first == std::string_view::npos ? ""
                                           : text.substr(first, text.find_last_not_of(Blanks) - first + 1);
}

std::string_view WithoutComment(std::string_view line) {
    for (size_t at = line.find('#'); at != std::string_view::npos; at = line.find('#', at + 1)) {
        if (at == 0 || Blanks.find(line[at - 1]) != std::string_view::npos) {
            return line.substr(0, at);
        }
    }
    return line;
}

std::string KnownKeys() {
    std::string names;
    for (const SetupKey& key : Keys) {
        names += (names.empty() ? "" : ", ") + std::string(key.Name);
    }
    return names;
}

// What is wrong with the line, or empty.
std::string Check(const SetupLine& line, const std::vector<SetupLine>& before) {
    const auto* const known = std::ranges::find(Keys, line.Key, &SetupKey::Name);
    if (known == std::end(Keys)) {
        return "there is no key '" + line.Key + "', only " + KnownKeys();
    }
    if (line.Value.empty()) {
        return line.Key + " has no value";
    }
    const auto first = std::ranges::find(before, line.Key, &SetupLine::Key);
    return first == before.end() || known->MayRepeat ? "" : line.Key + " stands on another line already";
}

}  // namespace

std::optional<std::vector<SetupLine>> ParseSetup(std::string_view text, const std::string& file,
                                                 std::string* why) {
    constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(ByteOrderMark)) {
        text.remove_prefix(ByteOrderMark.size());
    }
    std::vector<SetupLine> lines;
    for (unsigned number = 1; !text.empty(); ++number) {
        const size_t end = std::min(text.find('\n'), text.size());
        const std::string_view content = Trimmed(WithoutComment(text.substr(0, end)));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (content.empty()) {
            continue;
        }
        const size_t equals = content.find('=');
        const bool whole = equals != std::string_view::npos;
        SetupLine line{.Key = std::string(Trimmed(content.substr(0, equals))),
                       .Value = std::string(whole ? Trimmed(content.substr(equals + 1)) : ""),
                       .Place = file + ":" + std::to_string(number)};
        const std::string wrong = whole ? Check(line, lines) : "a line must be KEY = VALUE";
        if (!wrong.empty()) {
            *why = line.Place + ": " + wrong;
            return std::nullopt;
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

}  // namespace simulator
