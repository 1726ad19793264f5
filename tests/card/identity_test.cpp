// How far a card's identity is read: what a good page asks for next, that a bad one does no harm, and what
// the Version page shows of it.
#include <array>

#include "config_ui/resource.h"
#include "tests/support/sheet_test.h"

namespace {

using Page = std::array<uint8_t, 128>;

void PutWord(Page* page, size_t word, unsigned value) {
    (*page)[2 * word] = static_cast<uint8_t>(value >> 8);
    (*page)[2 * word + 1] = static_cast<uint8_t>(value);
}

// The words from the third on, then noise: in all a sum of 0xFFFF plus `error`, with the high byte first.
Page PageWithSum(unsigned error, std::initializer_list<unsigned> words = {}) {
    Page page = {};
    const std::vector<BYTE> noise = Pattern(page.size(), 7);
    std::copy(noise.begin(), noise.end(), page.begin());
    size_t place = 2;
    for (const unsigned word : words) {
        PutWord(&page, place++, word);
    }
    PutWord(&page, 63, 0);
    unsigned sum = 0;
    for (size_t i = 0; i < page.size(); i += 2) {
        sum += page[i] * 256u + page[i + 1];
    }
    PutWord(&page, 63, 0xFFFF + error - sum);
    return page;
}

class IdentityTest : public SheetTest {};

TEST_F(IdentityTest, TheVersionIsReadOnlyBehindAPageWithARightSum) {
    Page blank;
    blank.fill(0xFF);  // 64 words of 0xFFFF make 0xFFC0
    const struct {
        Page Identity;
        const char* Fault;
        bool Accepted;
    } cases[] = {
        {PageWithSum(0), "", true},
        {PageWithSum(1), "", false},
        {PageWithSum(0x8000), "", false},
        {blank, "", false},
        {PageWithSum(0), "READ_NVRAM_PAGE:1", false},
        // The sum is the check of a page, however much of it is said to have come.
        {PageWithSum(0), "READ_NVRAM_PAGE:1:short", true},
        {PageWithSum(0), "READ_NVRAM_PAGE:2", true},
        {PageWithSum(0), "READ_PCI_CONFIG:1", true},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(&test - cases);
        UnloadDriver();
        Cards().SetIdentityPage(0, test.Identity);
        if (*test.Fault != 0) {
            AddFault(test.Fault);
        }
        Cards().ClearTrace();
        EXPECT_EQ(waveOutGetNumDevs(), 2u) << "the card is there all the same";
        Lines expected = {"READ_PCI_CONFIG 08 1", "READ_NVRAM_PAGE FF80"};
        if (test.Accepted) {
            expected.emplace_back("READ_NVRAM_PAGE FF00");
        }
        EXPECT_EQ(TraceText({"write", "read", "stall", "BIND", "RELEASE", "GET"}), expected);
        Cards().ClearFaults();
    }
}

TEST_F(IdentityTest, ThePageShowsEachNumberInItsFormat) {
    Cards().SetIdentityPage(0, PageWithSum(0, {'C', 12, 104, 7}));
    Page version = {};
    PutWord(&version, 61, 10 * 256 + 3);
    PutWord(&version, 62, 12345);
    Cards().SetVersionPage(0, version);
    Cards().SetPciRegister(0, 8, std::array<uint8_t, 1>{0xC8});
    const SheetPage page = Open().Show(2);
    EXPECT_EQ(page.Text(IDC_PCI_REVISION), u"200");
    EXPECT_EQ(page.Text(IDC_BOARD_REVISION), u"C.12");
    EXPECT_EQ(page.Text(IDC_FPGA_REVISION), u"104");
    EXPECT_EQ(page.Text(IDC_FPGA_VERSION), u"10.03.12345");
    EXPECT_EQ(page.Text(IDC_SERIAL_NUMBER), u"01-20-00007");
}

}  // namespace
