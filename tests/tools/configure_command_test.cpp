// `kestvox configure` where there is no screen: the sheet as text.
#include <gtest/gtest.h>

#include "tests/tools/command_runner.h"

namespace {

TEST(ConfigureCommand, PrintsEveryKindOfControlWithItsState) {
    const CommandResult result =
        RunCommand({"configure", "--cards", "2", "--follow", "1=0", "--set", "0:Professional=0", "--set",
                    "0:DitherADC=1", "--set", "0:ClockSource=64", "--set", "1:Name=Booth"});
    EXPECT_EQ(result.Status, 0) << result.Errors;
    constexpr const char* Tree =
        "  1001  tree\n               Sample Clock\n                 Kestrelvox (digital input clock)\n"
        "                   Booth\n";
    const char* lines[] = {
        "Configuration: 'Kestrelvox'\n        group    'Kestrelvox name'\n  1002  edit     'Kestrelvox'\n",
        "  1024  radio    (*) 'Consumer mode'\n  1025  check    [ ] 'Copy protect'\n",
        "  1047  list     No dithering | *Type I | Type I Shaped | Type II | Type II Shaped\n",
        "\nMonitor: 'Booth'\n        group    'Analog Output Mixer'\n        label    'Analog Input'\n",
        "  1037  slider   18 of 18 to 83  (disabled)\n  1038  value    '-INF dB'  (disabled)\n",
        "\nVersion: 'Booth'\n        picture\n",
        Tree,
        "  1051  value    '80 ms'\n",
    };
    for (const char* line : lines) {
        EXPECT_NE(result.Output.find(line), std::string::npos) << line << "is not in\n" << result.Output;
    }
}

TEST(ConfigureCommand, RefusesBadInputInOneLine) {
    const std::vector<std::string> bad[] = {{"--cards", "0"}, {"--follow", "1=0"}, {"sheet"}, {"--page"}};
    for (const std::vector<std::string>& options : bad) {
        std::vector<std::string> arguments = {"configure"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const CommandResult result = RunCommand(arguments);
        EXPECT_EQ(result.Status, 2) << options[0];
        EXPECT_EQ(result.Output, "") << options[0];
        EXPECT_EQ(result.Errors.find('\n'), result.Errors.size() - 1) << result.Errors;
    }
}

}  // namespace
