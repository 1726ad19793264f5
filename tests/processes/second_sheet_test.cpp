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

TEST(SheetOfAnotherProgram, ComesToTheFront) {
    const SharedMachine machine;
    Companion other(ShowTheFirst);
    const Program program(1);
    const DriverLibrary library;
    ASSERT_EQ(other.Ask(), 1);
    Sheet second(library, Sheet::Entry::Configure);
    EXPECT_EQ(second.Window(), nullptr);
    EXPECT_EQ(second.Closed(), DRVCNF_OK);
    const Sheet withInformation(library);
    EXPECT_NE(withInformation.Window(), nullptr);
    other.Tell(1);
}

TEST(SheetOfAnotherProgram, IsForgottenWhenThatIsKilled) {
    const SharedMachine machine;
    Companion other(ShowTheFirst);
    const Program program(1);
    const DriverLibrary library;
    other.Tell(1);
    ASSERT_EQ(other.Hear(), 1);
    other.Kill();
    const Sheet own(library, Sheet::Entry::Configure);
    EXPECT_NE(own.Window(), nullptr);
}

}  // namespace
