// What is made from, or written of, what the command says of itself.
#include <algorithm>
#include <regex>
#include <set>

#include "tests/tools/command_test.h"
#include "tests/tools/wav_bytes.h"

namespace {

using ManPage = CommandTest;
using Completion = CommandTest;
using CommandPage = CommandTest;

// The page without its escapes and changes of font.
std::string PlainPage() {
    return std::regex_replace(ReadFile(KESTVOX_MAN_PAGE), std::regex(R"(\\(f[BIP]|&)?)"), "");
}

// The first word of every row of a list in the help.
std::vector<std::string> Listed(const std::string& help, const std::string& list) {
    const size_t begin = std::min(help.find("\n" + list + ":\n"), help.size());
    const std::string rows = help.substr(begin, help.find("\n\n", begin) - begin);
    const std::regex first("\n  ([^ \n]+)");
    return {std::sregex_token_iterator(rows.begin(), rows.end(), first, 1), std::sregex_token_iterator()};
}

TEST_F(ManPage, TellsEveryOptionOfEveryCommand) {
    const std::string page = PlainPage();
    const std::vector<std::string> commands = Listed(Shell("$K --help").Output, "Subcommands");
    ASSERT_GE(commands.size(), 9u);
    for (const std::string& command : commands) {
        SCOPED_TRACE(command);
        const size_t begin = page.find("\n.SS \"kestvox " + command + " ");
        ASSERT_NE(begin, std::string::npos);
        const std::string section = page.substr(begin, page.find("\n.S", begin + 1) - begin);
        const std::vector<std::string> options = Listed(Shell("$K " + command + " --help").Output, "Options");
        ASSERT_GE(options.size(), 1u);
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

TEST_F(Completion, OffersCommandsOptionsAndChoices) {
    const auto offered = [this](const std::string& words) {
        return Shell("bash -c 'source " KESTVOX_COMPLETION "; COMP_WORDS=(kestvox " + words +
                     "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _kestvox; echo ${COMPREPLY[@]}'")
            .Output;
    };
    EXPECT_EQ(offered("loop"), "loopback\n");
    EXPECT_EQ(offered("play --time s"), "stepped\n");
    for (const std::string command : {"play", "record", "settings"}) {
        std::string options;
        for (const std::string& option : Listed(Shell("$K " + command + " --help").Output, "Options")) {
            options += (options.empty() ? "" : " ") + option.substr(option.find("--"));
        }
        EXPECT_EQ(offered(command + " --"), options + "\n");
    }
}

std::set<std::string> AllMatches(const std::string& text, const char* pattern) {
    const std::regex regex(pattern);
    return {std::sregex_token_iterator(text.begin(), text.end(), regex, 1), std::sregex_token_iterator()};
}

// The code words in the first columns of the tables.
std::set<std::string> ToldInTables(const std::string& text) {
    std::string firstColumns;
    for (const std::string& column : AllMatches(text, "\n\\| (`.*?) \\| ")) {
        firstColumns += column;
    }
    return AllMatches(firstColumns, "`([a-z-]+)`");
}

// Every key of the report, and no other.
TEST_F(CommandPage, TellsEveryLineOfTheReport) {
    Write("in.wav", NoiseFile(1000));
    const std::string reports =
        Shell(
            "for words in 'play in.wav' 'record out.wav --seconds 0.01' 'loopback in.wav'; do "
            "$K $words --time stepped --json; done")
            .Output;
    const std::string page = ReadFile(KESTVOX_COMMAND_PAGE);
    EXPECT_EQ(ToldInTables(page.substr(0, page.find("\n## How it ends"))),
              AllMatches(reports, "\"([a-z-]+)\": "));
}

TEST_F(CommandPage, TellsEveryKeyOfTheSetupFile) {
    const std::string refusal = Shell("echo 'x = 1' >scene; $K play in.wav --setup scene").Errors;
    const std::string page = ReadFile(KESTVOX_COMMAND_PAGE);
    const size_t begin = page.find("\n## The scene in a file");
    EXPECT_EQ(ToldInTables(page.substr(begin, page.find("\n## ", begin + 1) - begin)),
              AllMatches(refusal.substr(refusal.find("only")), "([a-z-]+)(?:,|\n)"));
}

}  // namespace
