// docs/registers.md shows what one register write does, with the driver as it is and with a fault in it. The
// first half is run here as it stands on the page.
#include <algorithm>
#include <regex>

#include "tests/tools/command_test.h"

namespace {

// The indented lines below the heading: a text for each block.
std::vector<std::string> BlocksBelow(const std::string& page, const std::string& heading) {
    const std::string below = page.substr(std::min(page.find(heading), page.size()));
    const std::regex block("\n((    .*\n)+)");
    std::vector<std::string> blocks;
    for (std::sregex_iterator at(below.begin(), below.end(), block), end; at != end; ++at) {
        blocks.push_back(std::regex_replace((*at)[1].str(), std::regex("(^|\n)    "), "$1"));
    }
    return blocks;
}

using RegisterWalk = CommandTest;

TEST_F(RegisterWalk, PrintsWhatThePageSays) {
    const std::vector<std::string> blocks =
        BlocksBelow(ReadFile(KESTVOX_REGISTERS_PAGE), "## Change one register write");
    ASSERT_EQ(blocks.size(), 3u);
    const std::string commands = std::regex_replace(blocks[0], std::regex("--machine good"), "--machine $$M");
    const CommandResult result =
        Shell("M=kestvox-test-$$\nkestvox() { $K \"$@\"; }\n" + commands + "kestvox machine remove $M");
    EXPECT_EQ(result.Errors, "");
    EXPECT_EQ(result.Output, blocks[1]);
    EXPECT_NE(Read("good.html").find("\"differences\": 0,"), std::string::npos);
    EXPECT_NE(blocks[1], blocks[2]);
}

}  // namespace
