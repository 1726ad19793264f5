// The buffer sizes of the ASIO + EASI page: what is stored, shown, chosen and stored again.
#include "config_ui/resource.h"
#include "tests/support/sheet_test.h"

namespace {

using AsioEasiPageTest = SheetTest;

TEST_F(AsioEasiPageTest, EachSliderHasItsOwnTimeAndValue) {
    Sheet& first = Open();
    const SheetPage page = first.Show(u"ASIO + EASI");
    EXPECT_EQ(page.Text(IDC_ASIO_BUFFER_TIME), u"80 ms");
    EXPECT_EQ(page.Text(IDC_EASI_BUFFER_TIME), u"80 ms");
    EXPECT_FALSE(RegistryKeyExists(CommonKey) || first.CanApply());
    page.Press(IDC_ASIO_BUFFER, VK_HOME);
    EXPECT_TRUE(first.CanApply());
    page.Slide(IDC_EASI_BUFFER, 123);
    EXPECT_EQ(page.Text(IDC_ASIO_BUFFER_TIME), u"4 ms");
    EXPECT_EQ(page.Text(IDC_EASI_BUFFER_TIME), u"246 ms");
    first.Apply();
    EXPECT_FALSE(first.CanApply());
    page.Press(IDC_EASI_BUFFER, VK_END);
    EXPECT_EQ(page.Text(IDC_EASI_BUFFER_TIME), u"1000 ms");
    first.Dismiss();
    EXPECT_EQ(StoredBufferSize(u"AsioBufferSize"), 2u);
    EXPECT_EQ(StoredBufferSize(u"EasiBufferSize"), 123u) << "the last change is cancelled";
    EXPECT_EQ(Open().Show(u"ASIO + EASI").Text(IDC_EASI_BUFFER_TIME), u"246 ms");
}

TEST_F(AsioEasiPageTest, ScaleHasAMarkAtEachEndAndEachFifty) {
    const SheetPage page = Open().Show(u"ASIO + EASI");
    for (const int slider : {IDC_ASIO_BUFFER, IDC_EASI_BUFFER}) {
        std::vector<LRESULT> marks;
        for (WPARAM mark = 0; mark < 20; ++mark) {
            const LRESULT position = SendMessageW(page.Control(slider), TBM_GETTIC, mark, 0);
            if (position > 2 && position < 500) {
                marks.push_back(position);
            }
        }
        EXPECT_EQ(marks, (std::vector<LRESULT>{50, 100, 150, 200, 250, 300, 350, 400, 450}));
    }
}

// What counts for nothing is shown as the nearest that does, or as the default. What does not come from a
// sheet is not kept as another sheet's choice, either.
TEST_F(AsioEasiPageTest, OnlyAFourByteBinaryValueCounts) {
    const struct {
        const char* What;
        DWORD Type;
        std::vector<BYTE> Data;
        DWORD Position;
        bool IsKept;
    } cases[] = {
        {"as stored", REG_BINARY, {200, 0, 0, 0}, 200, true},
        {"a number", REG_DWORD, {200, 0, 0, 0}, 40, false},
        {"too long", REG_BINARY, {200, 0, 0, 0, 0}, 40, false},
        {"too short", REG_BINARY, {200, 0}, 40, false},
        {"below the range", REG_BINARY, {1, 0, 0, 0}, 2, false},
        {"above it", REG_BINARY, {0, 2, 0, 0}, 500, false},
        {"the largest number", REG_BINARY, {255, 255, 255, 255}, 500, false},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.What);
        const auto store = [&each] {
            StoreValue(CommonKey, TEXT("AsioBufferSize"), each.Data.data(),
                       static_cast<DWORD>(each.Data.size()), each.Type);
        };
        store();
        Sheet& sheet = Open();
        const SheetPage page = sheet.Show(u"ASIO + EASI");
        EXPECT_EQ(page.Position(IDC_ASIO_BUFFER), static_cast<int>(each.Position));
        sheet.Apply();
        EXPECT_EQ(StoredBufferSize(u"AsioBufferSize"), each.Position);
        page.Slide(IDC_ASIO_BUFFER, 100);
        sheet.Apply();
        store();
        sheet.Accept();
        EXPECT_EQ(StoredBufferSize(u"AsioBufferSize"), each.IsKept ? each.Position : 100);
    }
}

// Its memory would hold what was shown first.
TEST_F(AsioEasiPageTest, APageWithoutMemoryStoresWhatIsShown) {
    const DWORD stored = 200;
    StoreValue(CommonKey, TEXT("AsioBufferSize"), &stored, sizeof stored, REG_BINARY);
    Sheet& sheet = Open();
    test_system::FailCall("HeapAlloc", 2);  // the first is for the path of the key
    const SheetPage page = sheet.Show(u"ASIO + EASI");
    EXPECT_FALSE(test_system::CallFailuresAreWaiting());
    page.Slide(IDC_ASIO_BUFFER, 100);
    sheet.Accept();
    EXPECT_EQ(StoredBufferSize(u"AsioBufferSize"), 100u);
}

}  // namespace
