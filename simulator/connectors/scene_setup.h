// A file that sets the scene: lines "key = value". Empty lines count for nothing, and neither does what
// follows a '#' at the beginning of a line or after a space.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace simulator {

struct SetupLine {
    std::string Key;
    std::string Value;
    std::string Place;  // "FILE:LINE", for what is said of it
};

// The lines of the text in their order. Nothing, and one line in `why` that begins with its place, when a
// line is not of the form, has a key that there is not or no value, or repeats a key that may stand only
// once: only "input", "cable" and "fault" may stand on several lines. `file` is what the places call the
// file.
std::optional<std::vector<SetupLine>> ParseSetup(std::string_view text, const std::string& file,
                                                 std::string* why);

}  // namespace simulator
