#include "simulator/connectors/scene_syntax.h"

#include <charconv>
#include <cmath>

namespace simulator {
namespace {

constexpr std::string_view ToneWord = "tone:";
constexpr int32_t ToneAmplitude = 0x40000000;

// The whole text as a number.
template <typename Number>
std::optional<Number> ParseNumber(std::string_view text) {
    Number value{};
    const char* const end = text.data() + text.size();
    const auto [parsed, error] = std::from_chars(text.data(), end, value);
    return error == std::errc{} && parsed == end ? std::optional(value) : std::nullopt;
}

std::string_view WithoutSpaces(std::string_view text) {
    const size_t first = text.find_first_not_of(' ');
    return first == std::string_view::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace

std::optional<InputSignal> ParseSignal(std::string_view text) {
    if (text == "silence") {
        return InputSignal::Silence();
    }
    if (!text.starts_with(ToneWord)) {
        return std::nullopt;
    }
    const std::optional<double> hertz = ParseNumber<double>(text.substr(ToneWord.size()));
    const bool good = hertz && std::isfinite(*hertz) && *hertz > 0;
    return good ? std::optional(InputSignal::Tone(*hertz, ToneAmplitude)) : std::nullopt;
}

std::optional<Connector> ParseConnector(std::string_view text) {
    const char last = text.empty() ? '\0' : text.back();
    if (last != 'a' && last != 'd') {
        return std::nullopt;
    }
    const std::optional<unsigned> card = ParseNumber<unsigned>(text.substr(0, text.size() - 1));
    return card ? std::optional(Connector{*card, last == 'd' ? Port::Digital : Port::Analog}) : std::nullopt;
}

PluggedText ParsePlugged(std::string_view text) {
    const size_t equals = text.find('=');
    const std::optional<Connector> where = equals == std::string_view::npos
                                               ? std::nullopt
                                               : ParseConnector(WithoutSpaces(text.substr(0, equals)));
    return {where, where ? WithoutSpaces(text.substr(equals + 1)) : text};
}

std::optional<CableEnds> ParseCable(std::string_view text) {
    const size_t arrow = text.find('>');
    if (arrow == std::string_view::npos) {
        return std::nullopt;
    }
    const std::optional<Connector> output = ParseConnector(WithoutSpaces(text.substr(0, arrow)));
    const std::optional<Connector> input = ParseConnector(WithoutSpaces(text.substr(arrow + 1)));
    return output && input ? std::optional(CableEnds{*output, *input}) : std::nullopt;
}

std::vector<std::string_view> SplitList(std::string_view text, std::string_view separators) {
    std::vector<std::string_view> parts;
    while (!text.empty()) {
        const size_t end = text.find_first_of(separators);
        if (const std::string_view part = WithoutSpaces(text.substr(0, end)); !part.empty()) {
            parts.push_back(part);
        }
        text = end == std::string_view::npos ? "" : text.substr(end + 1);
    }
    return parts;
}

}  // namespace simulator
