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
    ShowWindow(sheet.Window(), SW_MINIMIZE);
    test.Tell(IsIconic(sheet.Window()) != FALSE);
    test.Hear();
    test.Tell(sheet.IsOpen() && !IsIconic(sheet.Window()));
    test.Hear();
}

TEST(SheetOfAnotherProgram, ComesToTheFrontUntilThatIsKilled) {
    const SharedMachine machine;
    Companion other(ShowTheFirst);
    const Program program(1);
    const DriverLibrary library;
    ASSERT_EQ(other.Ask(), 1);
    {
        Sheet second(library, Sheet::Entry::Configure);
        EXPECT_EQ(second.Window(), nullptr);
        EXPECT_EQ(second.Closed(), DRVCNF_OK);
        const Sheet withInformation(library);
        EXPECT_NE(withInformation.Window(), nullptr);
    }
    EXPECT_EQ(other.Ask(), 1) << "it is brought back";
    other.Kill();
    const Sheet own(library, Sheet::Entry::Configure);
    EXPECT_NE(own.Window(), nullptr);
}

}  // namespace
