// How far a card's identity is read: what a good page asks for next, and that a bad one does no harm.
#include <array>
#include <string>
#include <vector>

#include "tests/support/driver_test.h"
#include "tests/support/wave_player.h"

namespace {

using Page = std::array<uint8_t, 128>;

void PutWord(Page* page, size_t word, unsigned value) {
    (*page)[2 * word] = static_cast<uint8_t>(value >> 8);
    (*page)[2 * word + 1] = static_cast<uint8_t>(value);
}

// Words that sum up to 0xFFFF plus `error` when read with the high byte first.
Page PageWithSum(unsigned error) {
    Page page = {};
    const std::vector<BYTE> noise = Pattern(page.size(), 7);
    std::copy(noise.begin(), noise.end(), page.begin());
    PutWord(&page, 63, 0);
    unsigned sum = 0;
    for (size_t i = 0; i < page.size(); i += 2) {
        sum += page[i] * 256u + page[i + 1];
    }
    PutWord(&page, 63, 0xFFFF + error - sum);
    return page;
}

Page FilledPage(uint8_t value) {
    Page page;
    page.fill(value);
    return page;
}

class IdentityTest : public DriverTest {
protected:
    // The reads of the discovery, after which the card has to be there whatever they gave.
    std::vector<std::string> Reads() {
        UnloadDriver();
        Cards().ClearTrace();
        EXPECT_EQ(waveOutGetNumDevs(), 2u);
        std::vector<std::string> reads;
        for (const std::string& line : TraceText()) {
            if (line.starts_with("READ_")) {
                reads.push_back(line);
            }
        }
        Cards().ClearFaults();
        return reads;
    }

    const std::vector<std::string> rejected_ = {"READ_PCI_CONFIG 08 1", "READ_NVRAM_PAGE FF80"};
    const std::vector<std::string> accepted_ = {"READ_PCI_CONFIG 08 1", "READ_NVRAM_PAGE FF80",
                                                "READ_NVRAM_PAGE FF00"};
};

TEST_F(IdentityTest, TheVersionIsReadOnlyBehindAPageWithARightSum) {
    const struct {
        Page Identity;
        bool Accepted;
    } cases[] = {
        {PageWithSum(0), true},       {PageWithSum(1), false},   {PageWithSum(0xFFFF), false},
        {PageWithSum(0x8000), false}, {FilledPage(0xFF), false},  // 64 words of 0xFFFF make 0xFFC0
        {FilledPage(0x00), false},
    };
    for (const auto& expected : cases) {
        Cards().SetIdentityPage(0, expected.Identity);
        EXPECT_EQ(Reads(), expected.Accepted ? accepted_ : rejected_) << &expected - cases;
    }
}

TEST_F(IdentityTest, APageThatCannotBeReadIsNotUsed) {
    AddFault("READ_NVRAM_PAGE:1");
    EXPECT_EQ(Reads(), rejected_);
    // The sum is the check of a page, however much of it is said to have come.
    for (const char* fault : {"READ_NVRAM_PAGE:1:short", "READ_NVRAM_PAGE:1:pending", "READ_NVRAM_PAGE:2",
                              "READ_PCI_CONFIG:1", "READ_PCI_CONFIG:1:short"}) {
        AddFault(fault);
        EXPECT_EQ(Reads(), accepted_) << fault;
    }
}

}  // namespace
