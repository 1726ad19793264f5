// The manual page, which is made from what the command says of itself.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "tests/tools/command_runner.h"
#include "tests/tools/scratch_folder.h"

namespace {

// The page without its escapes and changes of font.
std::string PlainPage() {
    std::string page = ReadFile(KESTVOX_MAN_PAGE);
    for (const char* mark : {"\\fB", "\\fI", "\\fP", "\\&", "\\"}) {
        for (size_t at = 0; (at = page.find(mark, at)) != std::string::npos;) {
            page.erase(at, std::string(mark).size());
        }
    }
    return page;
}

// What the page has between a heading and the next one.
std::string SectionOf(const std::string& page, const std::string& heading) {
    const size_t begin = page.find(heading);
    return begin == std::string::npos ? "" : page.substr(begin, page.find("\n.S", begin + 1) - begin);
}

// The first word of every row of a list in the help.
std::vector<std::string> Listed(const std::string& help, const std::string& list) {
    std::vector<std::string> found;
    std::istringstream lines(help.substr(std::min(help.find("\n" + list + ":\n"), help.size())));
    std::string line;
    std::getline(lines, line);
    std::getline(lines, line);
    while (std::getline(lines, line) && !line.empty()) {
        if (line[2] != ' ') {
            found.push_back(line.substr(2, line.find(' ', 2) - 2));
        }
    }
    return found;
}

TEST(ManPage, TellsEveryOptionOfEveryCommand) {
    const std::string page = PlainPage();
    const std::vector<std::string> commands = Listed(RunCommand({"--help"}).Output, "Subcommands");
    ASSERT_GE(commands.size(), 9u);
    for (const std::string& command : commands) {
        SCOPED_TRACE(command);
        const std::string section = SectionOf(page, "\n.SS \"kestvox " + command + " ");
        const std::vector<std::string> options = Listed(RunCommand({command, "--help"}).Output, "Options");
        ASSERT_GE(options.size(), 2u);
        for (const std::string& option : options) {
            const std::string name = option == "-h,--help" ? "-h, --help" : option;
            const size_t at = section.find("\n.TP\n" + name);
            ASSERT_NE(at, std::string::npos) << name;
            // A line of its own says what it does.
            const size_t text = section.find('\n', at + 5) + 1;
            EXPECT_NE(section.substr(text, 1).find_first_not_of(".\n"), std::string::npos) << name;
        }
    }
    EXPECT_EQ(page.find('@'), std::string::npos) << "something is not filled in";
}

}  // namespace
