// The identity of a card as the Version page shows it.
#include <algorithm>
#include <array>

#include "config_ui/resource.h"
#include "tests/support/sheet_test.h"

namespace {

class VersionPageTest : public SheetTest {
protected:
    // Words 2 to 5 of the identity page; the last one makes the check come out.
    static std::array<uint8_t, 128> IdentityPage(std::array<unsigned, 4> words) {
        std::array<uint8_t, 128> page{};
        unsigned rest = 0xFFFF;
        for (size_t i = 0; i < words.size(); ++i) {
            PutWord(page, 2 + i, words[i]);
            rest -= words[i];
        }
        PutWord(page, 63, rest & 0xFFFF);
        return page;
    }
    static void PutWord(std::array<uint8_t, 128>& page, size_t word, unsigned value) {
        page[2 * word] = static_cast<uint8_t>(value >> 8);
        page[2 * word + 1] = static_cast<uint8_t>(value);
    }
};

TEST_F(VersionPageTest, ShowsEachNumberInItsFormat) {
    Cards().SetIdentityPage(0, IdentityPage({'C', 12, 104, 7}));
    std::array<uint8_t, 128> version{};
    version[122] = 10;
    version[123] = 3;
    version[124] = 0x30;  // 12345
    version[125] = 0x39;
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
