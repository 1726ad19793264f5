// The first initialisation of a card, access by access and with its waits.
#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "tests/support/driver_test.h"

namespace {

using Lines = std::vector<std::string>;

std::string Line(const char* format, unsigned index) {
    char text[64];
    std::snprintf(text, sizeof text, format, index);
    return text;
}

struct StatusWrite {
    unsigned Index;
    unsigned Byte;
};

void Append(Lines* lines, const Lines& more) {
    lines->insert(lines->end(), more.begin(), more.end());
}

void AppendIndirect(Lines* lines, StatusWrite write) {
    Append(lines, {Line("write card 27 = %02X / 0F", write.Index), "read card 26",
                   Line("write card 26 = %02X / FF", write.Byte)});
}

void AppendSilence(Lines* lines, unsigned first) {
    for (unsigned input = first; input < first + 4; ++input) {
        Append(lines, {Line("write card 3 = %02X / 07", input), "write card 2 = 00 / FF"});
    }
}

// `format` is the write that selects the channel status's format; the rate's bytes come first.
Lines Initialisation(const std::string& format, const std::vector<StatusWrite>& rate,
                     const std::vector<StatusWrite>& status) {
    Lines lines = {"BIND_HANDLE 0 control", "write card 32 = 03 / 77", "write card 0 = 00 / 03",
                   "write card 8 = 00 / 03", "write card 16 = 00 / 03"};
    AppendSilence(&lines, 0);
    Append(&lines, {"write card 24 = 00 / 03"});
    AppendSilence(&lines, 4);
    Append(&lines,
           {"write card 0 = 10 / 10", "write card 0 = 00 / 10", "write card 0 = 04 / 04",
            "write card 0 = 00 / 04", "write card 9 = 01 / 01", "write card 17 = 00 / 80", "stall 1",
            "write card 17 = 00 / 08", "write card 17 = 80 / 80", "write card 17 = 00 / 01",
            "write card 17 = 02 / 06", "write card 25 = 00 / 01", "stall 1", "write card 25 = 01 / 01"});
    for (unsigned index = 0; index < 16; ++index) {
        AppendIndirect(&lines, {index, 0});
    }
    for (const std::vector<StatusWrite>& bytes : {rate, status}) {
        Append(&lines, {format});
        for (const StatusWrite& write : bytes) {
            AppendIndirect(&lines, write);
        }
    }
    Append(&lines, {"RELEASE_CHANNEL"});
    return lines;
}

class InitCardTest : public DriverTest {
protected:
    // From the discovery's last handle on, which initialises the card.
    Lines Load() {
        UnloadDriver();
        Cards().ClearTrace();
        EXPECT_EQ(waveOutGetNumDevs(), 2u);
        const Lines all = TraceText();
        size_t start = 0;
        for (size_t i = 0; i < all.size(); ++i) {
            start = all[i] == "BIND_HANDLE 0 control" ? i : start;
        }
        return {all.begin() + static_cast<ptrdiff_t>(start), all.end()};
    }
};

TEST_F(InitCardTest, RunsThroughEveryStepInOrder) {
    EXPECT_EQ(Load(), Initialisation("write card 25 = 02 / 02", {{0, 0x41}, {2, 0x2C}, {3, 0}, {4, 0}},
                                     {{0, 0x41}, {1, 0}}));
    StoreSetting(0, TEXT("Professional"), 0);
    EXPECT_EQ(Load(), Initialisation("write card 25 = 00 / 02", {{0, 0}, {2, 0}, {3, 0}, {4, 0}},
                                     {{0, 0x04}, {1, 0x81}}));
}

// Waits from a millisecond on last the milliseconds rounded up and then to the next tick, wherever
// between two ticks they begin: never less than was asked for. Shorter ones are the kernel's.
TEST_F(InitCardTest, WaitsWhereTheHardwareNeedsIt) {
    constexpr int64_t Tick = 1000;
    for (const int64_t phase : {0, 300, 999}) {
        SCOPED_TRACE(phase);
        UnloadDriver();
        Cards().Advance(Tick - Cards().NowMicroseconds() % Tick + phase);
        Cards().ClearTrace();
        waveOutGetNumDevs();
        const std::map<std::string, int64_t> waits = {
            {"write card 0 = 10 / 10", 11 * Tick - phase},  // 10000
            {"write card 0 = 00 / 10", 101 * Tick},         // 100000
            {"write card 0 = 04 / 04", 2 * Tick},           // 1000
            {"write card 0 = 00 / 04", 94 * Tick},          // 92971
            {"stall 1", 1},
        };
        const std::vector<simulator::TraceEntry> trace = Cards().Trace();
        size_t waited = 0;
        for (size_t i = 0; i + 1 < trace.size(); ++i) {
            const auto wait = waits.find(trace[i].Text());
            waited += wait != waits.end();
            EXPECT_EQ(trace[i + 1].Microseconds - trace[i].Microseconds,
                      wait != waits.end() ? wait->second : 0)
                << trace[i].Text() << ", access " << i;
        }
        EXPECT_EQ(waited, 6u);
    }
}

// A card that refuses every access is taken through the whole sequence all the same; only the
// sequences of two accesses end at their first.
TEST_F(InitCardTest, GoesOnWhateverTheCardAnswers) {
    AddFault("WRITE_REGISTER:all");
    AddFault("STALL:all");
    const Lines accesses = Load();
    Lines expected;
    for (const std::string& line : Initialisation("write card 25 = 02 / 02", {}, {})) {
        if (!line.starts_with("write card 2 =") && !line.ends_with(" card 26") &&
            !line.starts_with("write card 26")) {
            expected.push_back(line);
        }
    }
    EXPECT_EQ(accesses, expected);
    Cards().ClearFaults();
}

// Each of the channel status's two sequences ends with its first register, each clearing with its own.
TEST_F(InitCardTest, AnIndirectRegisterThatCannotBeReadIsNotWritten) {
    for (const char* fault : {"READ_REGISTER:all", "READ_REGISTER:all:short", "READ_REGISTER:all:pending"}) {
        AddFault(fault);
        const Lines accesses = Load();
        EXPECT_EQ(std::count(accesses.begin(), accesses.end(), "read card 26"), 16 + 2) << fault;
        EXPECT_EQ(std::count_if(accesses.begin(), accesses.end(),
                                [](const std::string& line) { return line.starts_with("write card 26"); }),
                  0)
            << fault;
        Cards().ClearFaults();
    }
}

}  // namespace
