// Faults as users write them.
#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "tests/simulator/card_file.h"

namespace simulator_tests {
namespace {

using namespace simulator;

TEST(SimulatorFault, TextSaysWhatGoesWrongAndWhen) {
    struct Case {
        const char* Text;
        Fault Meaning;
    };
    const Case good[] = {
        {"START_TRANSFER:3", {.What = Fault::Kind::Fail, .Code = StartTransfer, .Nth = 3}},
        {"get_position:all:Short", {.What = Fault::Kind::Short, .Code = GetPosition, .Nth = 0}},
        {"any:1:pending", {.What = Fault::Kind::Pend, .Code = Fault::AnyCode}},
        {"completion:all:lost", {.What = Fault::Kind::Lost, .Code = Fault::Completion, .Nth = 0}},
        {"completion:1:late", {.What = Fault::Kind::Late, .Code = Fault::Completion}},
        {"completion:3:again=7",
         {.What = Fault::Kind::Again, .Code = Fault::Completion, .Nth = 3, .Delay = 7}},
    };
    for (const Case& test : good) {
        const std::optional<Fault> fault = ParseFault(test.Text);
        ASSERT_TRUE(fault) << test.Text;
        EXPECT_EQ(fault->What, test.Meaning.What) << test.Text;
        EXPECT_EQ(fault->Code, test.Meaning.Code) << test.Text;
        EXPECT_EQ(fault->Nth, test.Meaning.Nth) << test.Text;
        EXPECT_EQ(fault->Delay, test.Meaning.Delay) << test.Text;
    }
    for (const char* bad :
         {"", "START_TRANSFER", "START_TRANSFER:0", "START_TRANSFER:-1", "START_TRANSFER:1x", "START:1",
          "GET_POSITION:1:late", "completion:1", "completion:1:fail",
          "completion:1:late=", "completion:1:lost=5", "any:1:fail:1", "any:1:fail=1"}) {
        EXPECT_FALSE(ParseFault(bad)) << bad;
    }
}

// The kinds between `before` and `after` in what the user is told, for example {"late[=MICROSECONDS]",
// "lost"}.
std::vector<std::string> KindsTold(const std::string& before, char after) {
    const std::string text = FaultSyntax();
    const size_t begin = text.find(before) + before.size();
    std::istringstream kinds(text.substr(begin, text.find(after, begin) - begin));
    std::vector<std::string> told;
    for (std::string kind; std::getline(kinds, kind, '|');) {
        told.push_back(kind);
    }
    return told;
}

TEST(SimulatorFault, EveryKindThatTheUserIsToldOfIsUnderstood) {
    std::set<Fault::Kind> kinds;
    for (const auto& [target, told] : {std::pair("any:1:", KindsTold("REQUEST:N[:", ']')),
                                       std::pair("completion:1:", KindsTold("completion:N:", ';'))}) {
        for (const std::string& kind : told) {
            const size_t bracket = kind.find("[=MICROSECONDS]");
            const std::string text = target + kind.substr(0, bracket);
            const std::optional<Fault> fault = ParseFault(text);
            ASSERT_TRUE(fault) << text;
            kinds.insert(fault->What);
            EXPECT_EQ(ParseFault(text + "=5").has_value(), bracket != std::string::npos) << text;
        }
    }
    EXPECT_EQ(kinds.size(), 8u);
}

}  // namespace
}  // namespace simulator_tests
