// What the command has to say on standard error: one line each.
#pragma once

#include <string>

namespace kestvox {

// "kestvox: " and the text, in which line breaks become spaces.
void PrintProblem(const std::string& text) noexcept;
void PrintNote(const std::string& text) noexcept;

}  // namespace kestvox
