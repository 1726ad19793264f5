// Faults as users write them.
#include <gtest/gtest.h>

#include "tests/simulator/card_file.h"

namespace simulator_tests {
namespace {

using namespace simulator;

TEST(SimulatorFault, TextSaysWhatGoesWrongAndWhen) {
    const struct {
        const char* Text;
        Fault Meaning;
    } good[] = {
        {"START_TRANSFER:3", {.What = Fault::Kind::Fail, .Code = StartTransfer, .Nth = 3}},
        {"get_position:all:Short", {.What = Fault::Kind::Short, .Code = GetPosition, .Nth = 0}},
        {"any:1:die", {.What = Fault::Kind::Die, .Code = Fault::AnyCode}},
        {"completion:2:twice", {.What = Fault::Kind::Twice, .Code = Fault::Completion, .Nth = 2}},
        {"any:1:pending", {.What = Fault::Kind::Pend, .Code = Fault::AnyCode}},
        {"completion:all:lost", {.What = Fault::Kind::Lost, .Code = Fault::Completion, .Nth = 0}},
        {"completion:1:late", {.What = Fault::Kind::Late, .Code = Fault::Completion}},
        {"completion:3:again=7",
         {.What = Fault::Kind::Again, .Code = Fault::Completion, .Nth = 3, .Delay = 7}},
    };
    for (const auto& test : good) {
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

}  // namespace
}  // namespace simulator_tests
