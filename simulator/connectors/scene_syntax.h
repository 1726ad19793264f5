// What is plugged in, as a user writes it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/connectors/input_signal.h"

namespace simulator {

// "silence", or "tone:HZ" with a frequency above 0, at half of full scale. Nothing for any other text.
std::optional<InputSignal> ParseSignal(std::string_view text);

// A connector of a card: its number, and 'a' for the analog or 'd' for the digital one, as in "0a".
struct Connector {
    unsigned Card;
    simulator::Port Port;
};
std::optional<Connector> ParseConnector(std::string_view text);

// What is plugged into one input, "0a=WHAT", or without a connector into every one.
struct PluggedText {
    std::optional<Connector> Where;
    std::string_view What;
};
PluggedText ParsePlugged(std::string_view text);

// "OUTPUT>INPUT", as in "0a>1a".
struct CableEnds {
    Connector Output;
    Connector Input;
};
std::optional<CableEnds> ParseCable(std::string_view text);

// The parts between the separators, without the spaces around them. Empty parts are left out.
std::vector<std::string_view> SplitList(std::string_view text, std::string_view separators);

}  // namespace simulator
