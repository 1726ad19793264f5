// What a run shows of how far it is, and when it counts as standing still.
#include <gtest/gtest.h>

#include "tools/streams/progress_line.h"
#include "tools/streams/progress_watch.h"

namespace {

using namespace kestvox;

TEST(ProgressLine, FitsTheTerminal) {
    const Progress whole{.Seconds = 30, .TotalSeconds = 90, .BuffersInFlight = 5, .Decibels = -6.4};
    const Progress open{.Seconds = 30, .TotalSeconds = {}, .BuffersInFlight = 5, .Decibels = {}};
    const struct {
        const Progress& What;
        double Elapsed;
        unsigned Width;
        const char* Text;
    } cases[] = {
        {whole, 15, 80, "30.0 of 90.0 s, 2.0 x, 0:30 left, 5 in flight, -6 dB"},
        {whole, 15, 40, "30.0 of 90.0 s, 2.0 x, 0:30 left"},
        {whole, 0.01, 80, "30.0 of 90.0 s, 3000 x, 0:00 left, 5 in flight, -6 dB"},
        {whole, 15, 10, "30.0 of 9"},
        {open, 30, 80, "30.0 s, 1.0 x, 5 in flight"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ProgressText(c.What, c.Elapsed, c.Width), c.Text);
    }
}

// A stream beside one that moves; one that moves on and on; one that the program itself kept waiting.
TEST(ProgressWatch, FindsTheStreamThatStandsStill) {
    constexpr int64_t Patience = 5000000;
    const StreamProgress still{.Movement = 7, .IsFinished = false, .Length = {}};
    const auto moving = [](int64_t now) {
        return StreamProgress{.Movement = static_cast<uint64_t>(now), .IsFinished = false, .Length = 2000000};
    };
    ProgressWatch watch(Patience, true);
    watch.Begin(0);
    EXPECT_FALSE(watch.Look({moving(1), still}, 1));
    EXPECT_FALSE(watch.Look({moving(Patience), still}, Patience));
    ASSERT_TRUE(watch.Look({moving(Patience + 1), still}, Patience + 1));
    EXPECT_EQ(watch.Look({moving(Patience + 2), still}, Patience + 2)->Stream, 1u);
    watch.Excuse(Patience + 2);
    EXPECT_FALSE(watch.Look({moving(Patience + 3), still}, Patience + 3));

    watch.Begin(0);
    EXPECT_FALSE(watch.Look({moving(9000000)}, 9000000));
    EXPECT_EQ(watch.Look({moving(9000001)}, 9000001).value().Microseconds, 0);

    ProgressWatch shared(Patience, false);
    shared.Begin(0);
    EXPECT_FALSE(shared.Look({still}, 1));
    EXPECT_FALSE(shared.Look({still}, 100 * Patience)) << "others moved the clock";
}

}  // namespace
