// Pieces of JSON.
#pragma once

#include <string>

namespace kestvox {

// A JSON string that holds the text.
std::string QuotedJson(const std::string& text);

// A JSON list; `show` makes a JSON value of each element.
template <typename Elements, typename Show>
std::string JsonList(const Elements& elements, Show show) {
    std::string list;
    for (const auto& element : elements) {
        list += (list.empty() ? "" : ", ") + show(element);
    }
    return "[" + list + "]";
}

}  // namespace kestvox
