#include "tools/system/message.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tools/machine/host.h"

namespace kestvox {
namespace {

constexpr const char* Red = "\033[1;31m";
constexpr const char* Yellow = "\033[1;33m";
constexpr const char* Plain = "\033[0m";

// Any text in it that is not empty forbids.
bool HasColours() {
    const char* forbidden = std::getenv("NO_COLOR");
    return (!forbidden || *forbidden == '\0') && TerminalShowsColours();
}

void Print(const char* colour, const char* kind, const std::string& text) {
    const bool coloured = HasColours();
    std::fprintf(stderr, "%s%s%s", coloured ? colour : "", kind, coloured ? Plain : "");
    for (const char c : text) {
        std::fputc(c == '\n' ? ' ' : c, stderr);
    }
    std::fputc('\n', stderr);
}

}  // namespace

void PrintProblem(const std::string& text) noexcept {
    Print(Red, "kestvox: ", text);
}

void PrintNote(const std::string& text) noexcept {
    Print(Yellow, "kestvox: note: ", text);
}

}  // namespace kestvox
