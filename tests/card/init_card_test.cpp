// The first initialisation of a card, access by access and with its waits.
#include <algorithm>

#include "tests/clock/clock_script.h"

namespace {

Lines Silence(unsigned first) {
    Lines lines;
    for (unsigned input = first; input < first + 4; ++input) {
        lines = lines + Lines{"write card 3 = 0" + std::to_string(input) + " / 07", "write card 2 = 00 / FF"};
    }
    return lines;
}

// `format` is the write that selects the channel status's format; the rate's bytes come first.
Lines Initialisation(const std::string& format, const Lines& rate, const Lines& status) {
    Lines lines = Lines{"write card 32 = 03 / 77", "write card 0 = 00 / 03", "write card 8 = 00 / 03",
                        "write card 16 = 00 / 03"} +
                  Silence(0) + Lines{"write card 24 = 00 / 03"} + Silence(4) +
                  Lines{"write card 0 = 10 / 10",
                        Wait(10000),
                        "write card 0 = 00 / 10",
                        Wait(100000),
                        "write card 0 = 04 / 04",
                        Wait(1000),
                        "write card 0 = 00 / 04",
                        Wait(92971),
                        "write card 9 = 01 / 01",
                        "write card 17 = 00 / 80",
                        "stall 1",
                        "write card 17 = 00 / 08",
                        "write card 17 = 80 / 80",
                        "write card 17 = 00 / 01",
                        "write card 17 = 02 / 06",
                        "write card 25 = 00 / 01",
                        "stall 1",
                        "write card 25 = 01 / 01"};
    for (unsigned index = 0; index < 16; ++index) {
        lines = lines + StatusByte(index, 0);
    }
    return LinesOf("0 ", lines + Lines{format} + rate + Lines{format} + status);
}

class InitCardTest : public ClockTest {
protected:
    Lines Initialise() {
        UnloadDriver();
        Cards().ClearTrace();
        Load();
        return InitialisationIn(TimedLines(Cards().Trace()), 0);
    }
};

// Waits end with the same tick wherever between two ticks they begin: never less than was asked for.
TEST_F(InitCardTest, RunsThroughEveryStepInOrder) {
    constexpr int64_t Tick = 1000;
    for (const int64_t phase : {0, 300, 999}) {
        SCOPED_TRACE(phase);
        Cards().Advance(Tick - Cards().NowMicroseconds() % Tick + phase);
        StoreSetting(0, TEXT("Professional"), 1);
        EXPECT_EQ(Initialise(), Initialisation("write card 25 = 02 / 02", StatusRate(0x41, 0),
                                               StatusByte(0, 0x41) + StatusByte(1, 0)));
    }
    StoreSetting(0, TEXT("Professional"), 0);
    const Lines rate = StatusByte(0, 0) + StatusByte(2, 0) + StatusByte(3, 0) + StatusByte(4, 0);
    EXPECT_EQ(Initialise(),
              Initialisation("write card 25 = 00 / 02", rate, StatusByte(0, 0x04) + StatusByte(1, 0x81)));
}

// Each of the channel status's two sequences ends with its first register, each clearing with its own; the
// rest of the initialisation goes on.
TEST_F(InitCardTest, GoesOnWhateverTheCardAnswers) {
    AddFault("WRITE_REGISTER:1");
    AddFault("STALL:1");
    AddFault("READ_REGISTER:all:short");
    const Lines lines = Initialise();
    EXPECT_EQ(lines.front(), "0 write card 32 = 03 / 77");
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "0 read card 26"), 16 + 2);
    EXPECT_TRUE(std::none_of(lines.begin(), lines.end(),
                             [](const std::string& line) { return line.starts_with("0 write card 26"); }));
}

}  // namespace
