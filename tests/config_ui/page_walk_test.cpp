// Each page of the sheet under the keyboard, and its sliders under the mouse: by what is posted to the
// control with the focus, as the system posts it.
#include <ostream>

#include "config_ui/resource.h"
#include "tests/support/sheet_test.h"

namespace {

// Of every sheet.
constexpr int Apply = 0x3021;
constexpr int Tabs = 0x3020;
constexpr UINT HelpKey = 0x004D;  // what the system makes of F1

struct Press {
    WORD Key;
    int Focus;  // afterwards
};

struct PageWalk {
    const char* Name;
    size_t Page;
    std::vector<Press> Presses;  // from the page's first control to the sheet's buttons
    bool CanApply;               // by then
    int First;                   // control, which Tab comes back to
    ULONG_PTR Help;              // on it; 0: none
    int Changed;                 // a control that an arrow changes
    WORD Arrow;
    const char16_t* Stored;  // the value that Enter then stores; null: nothing changes
};

void PrintTo(const PageWalk& walk, std::ostream* out) {
    *out << walk.Name;
}

const std::vector<Press> Options = {{VK_TAB, IDC_LEFT},         {VK_DOWN, IDC_RIGHT},
                                    {VK_DOWN, IDC_LEFT},        {VK_TAB, IDC_ADVANCED_MONITORING},
                                    {VK_TAB, IDC_PUNCH_IN},     {VK_RIGHT, IDC_LOCK_TO_PLAYBACK},
                                    {VK_RIGHT, IDC_PUNCH_IN},   {VK_TAB, IDC_DITHER},
                                    {VK_TAB, IDC_CHECK_CLOCKS}, {VK_SPACE, IDC_CHECK_CLOCKS},
                                    {VK_TAB, IDC_PROFESSIONAL}, {VK_UP, IDC_CONSUMER},
                                    {VK_TAB, IDC_COPY_PROTECT}, {VK_TAB, IDC_NON_AUDIO},
                                    {VK_TAB, IDC_PREEMPHASIS}};
const std::vector<Press> Numbers = {{VK_TAB, IDC_BOARD_REVISION},
                                    {VK_DOWN, IDC_BOARD_REVISION},
                                    {VK_TAB, IDC_FPGA_REVISION},
                                    {VK_TAB, IDC_FPGA_VERSION},
                                    {VK_TAB, IDC_SERIAL_NUMBER}};
const std::vector<Press> Tree = {{VK_DOWN, IDC_CLOCK_TREE}};
const std::vector<Press> Sizes = {{VK_TAB, IDC_EASI_BUFFER}};

std::vector<Press> DownTheSliders() {
    std::vector<Press> presses;
    for (int slider = IDC_FIRST_MIXER_SLIDER + 2; slider < IDC_LAST_MIXER_VALUE; slider += 2) {
        presses.push_back({VK_TAB, slider});
    }
    return presses;
}

const PageWalk Walks[] = {
    {"Configuration", 0, Options, true, IDC_NAME, 904, IDC_DITHER, VK_DOWN, u"DitherADC"},
    {"Monitor", 1, DownTheSliders(), false, IDC_FIRST_MIXER_SLIDER, 911, IDC_FIRST_MIXER_SLIDER, VK_LEFT,
     u"Monitor"},
    {"Version", 2, Numbers, false, IDC_PCI_REVISION, 0, IDC_PCI_REVISION, VK_RIGHT, nullptr},
    {"Clocks", 3, Tree, false, IDC_CLOCK_TREE, 910, IDC_CLOCK_TREE, VK_DOWN, nullptr},
    {"BufferSizes", 4, Sizes, false, IDC_ASIO_BUFFER, 920, IDC_ASIO_BUFFER, VK_END, u"AsioBufferSize"},
};

HWND Focused(const SheetPage& page) {
    HWND focused = nullptr;
    page.OnItsThread([&focused] { focused = GetFocus(); });
    return focused;
}

int AfterKey(const SheetPage& page, WORD key) {
    const HWND focused = Focused(page);
    PostMessageW(focused, WM_KEYDOWN, key, 0);
    PostMessageW(focused, WM_KEYUP, key, 0);
    return GetDlgCtrlID(Focused(page));
}

class PageWalkTest : public SheetTest, public testing::WithParamInterface<PageWalk> {
protected:
    PageWalkTest() { StoreSetting(0, TEXT("AdvancedMonitoring"), 1); }

    // The last page is the sheet's own, the others are the card's.
    std::optional<RegistryValue> Stored() {
        const PageWalk& walk = GetParam();
        return walk.Stored == nullptr ? std::nullopt
                                      : ReadRegistry(walk.Page == 4 ? CommonKey : ConfigKey(), walk.Stored);
    }
};

// By the keys to the last page, and back to the walk's.
TEST_P(PageWalkTest, ByKeys) {
    constexpr size_t LastPage = 4;
    const PageWalk& walk = GetParam();
    Sheet& sheet = Open();
    const LRESULT tabs = SendMessageW(sheet.Window(), PSM_GETTABCONTROL, 0, 0);
    SendMessageW(sheet.Window(), WM_NEXTDLGCTL, static_cast<WPARAM>(tabs), TRUE);
    for (size_t press = 0; press < 2 * LastPage - walk.Page; ++press) {
        EXPECT_EQ(AfterKey(sheet.Current(), press < LastPage ? VK_RIGHT : VK_LEFT), Tabs);
    }
    const SheetPage page = sheet.Current();
    std::vector<Press> presses = walk.Presses;
    for (const int next : {IDOK, IDCANCEL, Apply, IDHELP, Tabs, walk.First}) {
        if (next != Apply || walk.CanApply) {
            presses.push_back({VK_TAB, next});
        }
    }
    page.Focus(walk.First);
    for (const Press& press : presses) {
        EXPECT_EQ(AfterKey(page, press.Key), press.Focus) << "press " << &press - presses.data();
    }
    const size_t before = HelpShown().size();
    PostMessageW(page.Control(walk.First), HelpKey, 0, 0);
    Focused(page);
    const std::vector<HelpCall> shown = HelpShown();
    ASSERT_EQ(shown.size(), before + (walk.Help != 0 ? 1 : 0));
    if (walk.Help != 0) {
        EXPECT_EQ(shown.back(), (HelpCall{u"kestvox.hlp", HELP_CONTEXTPOPUP, walk.Help}));
    }
}

TEST_P(PageWalkTest, EnterStoresWhatEscapeDoesNot) {
    const PageWalk& walk = GetParam();
    const std::optional<RegistryValue> untouched = Stored();
    for (const WORD key : {WORD{VK_ESCAPE}, WORD{VK_RETURN}}) {
        Sheet& sheet = Open();
        const SheetPage page = sheet.Show(walk.Page);
        page.Focus(walk.Changed);
        EXPECT_EQ(AfterKey(page, walk.Arrow), walk.Changed);
        EXPECT_EQ(sheet.CanApply(), walk.Stored != nullptr);
        PostMessageW(Focused(page), WM_KEYDOWN, key, 0);  // which ends the sheet
        PostMessageW(sheet.Window(), WM_NULL, 0, 0);
        EXPECT_EQ(sheet.Closed(), DRVCNF_OK);
        EXPECT_EQ(Stored() != untouched, walk.Stored != nullptr && key == VK_RETURN);
    }
}

INSTANTIATE_TEST_SUITE_P(, PageWalkTest, testing::ValuesIn(Walks), testing::PrintToStringParamName());

using SliderDragTest = SheetTest;

// From the middle of the scale, by that many pixels to the right: the thumb follows the mouse that has it,
// and stays where it is let go.
TEST_F(SliderDragTest, MovesAGain) {
    constexpr int Slider = IDC_FIRST_MIXER_SLIDER;
    for (const int pixels : {40, -10}) {
        const SheetPage page = Open().Show(1);
        page.Slide(Slider, 50);
        const int before = page.Position(Slider);
        const std::u16string text = page.Text(Slider + 1);
        page.OnItsThread([control = page.Control(Slider), pixels] {
            RECT thumb = {};
            SendMessageW(control, TBM_GETTHUMBRECT, 0, reinterpret_cast<LPARAM>(&thumb));
            const int x = (thumb.left + thumb.right) / 2;
            const int y = (thumb.top + thumb.bottom) / 2;
            SendMessageW(control, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(x, y));
            SendMessageW(control, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(x + pixels, y));
            SendMessageW(control, WM_LBUTTONUP, 0, MAKELPARAM(x + pixels, y));
            SendMessageW(control, WM_MOUSEMOVE, 0, MAKELPARAM(x, y));
        });
        EXPECT_GT((page.Position(Slider) - before) * pixels, 0);
        EXPECT_NE(page.Text(Slider + 1), text);
    }
}

}  // namespace
