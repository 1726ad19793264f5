// The first initialisation of a card, access by access and with its waits.
#include <algorithm>
#include <cstdio>

#include "tests/clock/clock_script.h"

namespace {

std::string Line(const char* format, unsigned index) {
    char text[64];
    std::snprintf(text, sizeof text, format, index);
    return text;
}

struct StatusWrite {
    unsigned Index;
    unsigned Byte;
};

Lines Indirect(StatusWrite write) {
    return {Line("write card 27 = %02X / 0F", write.Index), "read card 26",
            Line("write card 26 = %02X / FF", write.Byte)};
}

Lines Silence(unsigned first) {
    Lines lines;
    for (unsigned input = first; input < first + 4; ++input) {
        lines = lines + Lines{Line("write card 3 = %02X / 07", input), "write card 2 = 00 / FF"};
    }
    return lines;
}

// `format` is the write that selects the channel status's format; the rate's bytes come first.
Lines Initialisation(const std::string& format, const std::vector<StatusWrite>& rate,
                     const std::vector<StatusWrite>& status) {
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
        lines = lines + Indirect({index, 0});
    }
    for (const std::vector<StatusWrite>& bytes : {rate, status}) {
        lines.push_back(format);
        for (const StatusWrite& write : bytes) {
            lines = lines + Indirect(write);
        }
    }
    return lines;
}

class InitCardTest : public ClockTest {
protected:
    // From the discovery's last handle on, which initialises the card.
    Lines Initialise() {
        UnloadDriver();
        Cards().ClearTrace();
        Load();
        const Lines all = TimedLines(Cards().Trace());
        const auto bound = std::find(all.rbegin(), all.rend(), "0 BIND_HANDLE 0 control").base();
        Lines lines;
        std::transform(bound, all.end() - 1, std::back_inserter(lines), [](const std::string& line) {
            return line.starts_with("0 ") ? line.substr(2) : line;
        });
        EXPECT_EQ(all.back(), "0 RELEASE_CHANNEL");
        return lines;
    }
};

// Waits end with the same tick wherever between two ticks they begin: never less than was asked for.
TEST_F(InitCardTest, RunsThroughEveryStepInOrder) {
    constexpr int64_t Tick = 1000;
    for (const int64_t phase : {0, 300, 999}) {
        SCOPED_TRACE(phase);
        Cards().Advance(Tick - Cards().NowMicroseconds() % Tick + phase);
        StoreSetting(0, TEXT("Professional"), 1);
        EXPECT_EQ(Initialise(), Initialisation("write card 25 = 02 / 02",
                                               {{0, 0x41}, {2, 0x2C}, {3, 0}, {4, 0}}, {{0, 0x41}, {1, 0}}));
    }
    StoreSetting(0, TEXT("Professional"), 0);
    EXPECT_EQ(Initialise(), Initialisation("write card 25 = 00 / 02", {{0, 0}, {2, 0}, {3, 0}, {4, 0}},
                                           {{0, 0x04}, {1, 0x81}}));
}

// Each of the channel status's two sequences ends with its first register, each clearing with its own; the
// rest of the initialisation goes on.
TEST_F(InitCardTest, GoesOnWhateverTheCardAnswers) {
    AddFault("WRITE_REGISTER:1");
    AddFault("STALL:1");
    AddFault("READ_REGISTER:all:short");
    const Lines lines = Initialise();
    EXPECT_EQ(lines.front(), "write card 32 = 03 / 77");
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "read card 26"), 16 + 2);
    EXPECT_TRUE(std::none_of(lines.begin(), lines.end(),
                             [](const std::string& line) { return line.starts_with("write card 26"); }));
}

}  // namespace
