// Two programs of one desktop ask for the configuration sheet.
#include <gtest/gtest.h>

#include "tests/processes/companion.h"
#include "tests/support/sheet.h"

namespace {

void ShowTheFirst(Companion& test) {
    test.Hear();
    const Program program;
    const DriverLibrary library;
    const Sheet sheet(library, Sheet::Entry::Configure);
    ASSERT_NE(sheet.Window(), nullptr);
    ShowWindow(sheet.Window(), SW_MINIMIZE);
    ASSERT_TRUE(IsIconic(sheet.Window()));
    test.Tell(1);
    test.Hear();
    EXPECT_TRUE(sheet.IsOpen());
    EXPECT_FALSE(IsIconic(sheet.Window())) << "is brought back";
}

class SheetOfAnotherProgram : public testing::Test {
protected:
    const SharedMachine machine_;
    Companion other_{ShowTheFirst};
    const Program program_{1};
    const DriverLibrary library_;
};

TEST_F(SheetOfAnotherProgram, ComesToTheFront) {
    ASSERT_EQ(other_.Ask(), 1);
    Sheet second(library_, Sheet::Entry::Configure);
    EXPECT_EQ(second.Window(), nullptr);
    EXPECT_EQ(second.Closed(), DRVCNF_OK);
    const Sheet withInformation(library_);
    EXPECT_NE(withInformation.Window(), nullptr);
    other_.Tell(1);
}

TEST_F(SheetOfAnotherProgram, IsForgottenWhenThatIsKilled) {
    ASSERT_EQ(other_.Ask(), 1);
    other_.Kill();
    const Sheet own(library_, Sheet::Entry::Configure);
    EXPECT_NE(own.Window(), nullptr);
}

}  // namespace
