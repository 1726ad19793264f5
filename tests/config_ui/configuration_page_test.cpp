// The Configuration page: what it shows of the stored settings, what it stores, and what its options do to
// each other and to the other pages before that.
#include <array>

#include "config_ui/resource.h"
#include "tests/support/clock_tree_user.h"
#include "tests/support/sheet_test.h"

namespace {

using Controls = std::vector<int>;

// In an order in which a consumer's card can have each clicked.
constexpr int Buttons[] = {IDC_ADVANCED_MONITORING, IDC_LEFT,        IDC_RIGHT,
                           IDC_PROFESSIONAL,        IDC_CONSUMER,    IDC_COPY_PROTECT,
                           IDC_PREEMPHASIS,         IDC_NON_AUDIO,   IDC_PUNCH_IN,
                           IDC_LOCK_TO_PLAYBACK,    IDC_CHECK_CLOCKS};

constexpr const WCHAR* Numbers[] = {TEXT("Left24"),      TEXT("AdvancedMonitoring"), TEXT("Punchin"),
                                    TEXT("DitherADC"),   TEXT("CheckClocks"),        TEXT("Professional"),
                                    TEXT("CopyProtect"), TEXT("NonAudio"),           TEXT("Preemphasis")};

class ConfigurationPageTest : public SheetTest {
protected:
    using SheetTest::SheetTest;

    static Controls Checked(const SheetPage& page) {
        Controls checked;
        for (const int button : Buttons) {
            if (page.IsChecked(button)) {
                checked.push_back(button);
            }
        }
        return checked;
    }

    // In the order of Numbers.
    static void StoreNumbers(const std::array<DWORD, std::size(Numbers)>& values) {
        for (size_t i = 0; i < values.size(); ++i) {
            StoreSetting(0, Numbers[i], values[i]);
        }
    }
    static std::vector<std::optional<DWORD>> StoredNumbers() {
        std::vector<std::optional<DWORD>> stored;
        for (const WCHAR* name : Numbers) {
            stored.push_back(StoredNumber(Utf16(name)));
        }
        return stored;
    }
    static std::optional<RegistryValue> StoredName() { return ReadRegistry(ConfigKey(), u"Name"); }

    // "copy on, emphasis off", with brackets around what is disabled.
    static std::string OutputOptions(const SheetPage& page) {
        const auto describe = [&page](const char* name, int control) {
            const std::string text = std::string(name) + (page.IsChecked(control) ? " on" : " off");
            return page.IsEnabled(control) ? text : "[" + text + "]";
        };
        return describe("copy", IDC_COPY_PROTECT) + ", " + describe("emphasis", IDC_PREEMPHASIS);
    }
};

using TwoCardsConfiguration = WithCards<ConfigurationPageTest, 2>;

TEST_F(ConfigurationPageTest, ShowsTheDefaultsAndWhatIsStored) {
    const SheetPage defaults = Open().Current();
    EXPECT_EQ(defaults.Text(IDC_NAME), u"Kestrelvox");
    EXPECT_EQ(Checked(defaults), (Controls{IDC_LEFT, IDC_PROFESSIONAL, IDC_PUNCH_IN, IDC_CHECK_CLOCKS}));
    EXPECT_EQ(OutputOptions(defaults), "[copy off], emphasis off");
    EXPECT_EQ(defaults.Chosen(IDC_DITHER), 0);

    StoreText(0, TEXT("Name"), u"Studio");
    StoreNumbers({0, 2, 0, 7, 0, 0, 1, 0, 1});
    Reload();
    Sheet& sheet = Open();
    const SheetPage stored = sheet.Current();
    EXPECT_EQ(stored.Text(IDC_NAME), u"Studio");
    EXPECT_EQ(Checked(stored), (Controls{IDC_ADVANCED_MONITORING, IDC_RIGHT, IDC_CONSUMER, IDC_COPY_PROTECT,
                                         IDC_PREEMPHASIS, IDC_LOCK_TO_PLAYBACK}));
    EXPECT_EQ(stored.Chosen(IDC_DITHER), CB_ERR) << "there is no such type";
    sheet.Apply();
    EXPECT_EQ(StoredNumber(u"DitherADC"), 7u) << "it stays until the user picks one";
    stored.Choose(IDC_DITHER, 2);
    sheet.Apply();
    EXPECT_EQ(StoredNumber(u"DitherADC"), 2u);
}

TEST_F(ConfigurationPageTest, EachChangeCanBeAppliedAndIsStoredThen) {
    Sheet& sheet = Open();
    const SheetPage page = sheet.Current();
    const auto apply = [&sheet](int changed) {
        EXPECT_TRUE(sheet.CanApply()) << changed;
        sheet.Apply();
        EXPECT_FALSE(sheet.CanApply()) << changed;
    };
    EXPECT_FALSE(sheet.CanApply());
    page.Click(IDC_CONSUMER);  // now all are enabled
    EXPECT_FALSE(RegistryKeyExists(ConfigKey()));
    apply(IDC_CONSUMER);
    for (const int button : Buttons) {
        page.Click(button);
        apply(button);
    }
    page.Choose(IDC_DITHER, 4);
    apply(IDC_DITHER);
    page.Type(IDC_NAME, u"Studio");
    apply(IDC_NAME);
    EXPECT_EQ(StoredNumbers(), (std::vector<std::optional<DWORD>>{0, 1, 0, 4, 0, 0, 1, 1, 0}));
    EXPECT_EQ(StoredName(), TextValue(REG_SZ, u"Studio"));
    EXPECT_EQ(StoredNumber(u"ClockSource"), 97u) << "settings of other pages are stored along";
    EXPECT_EQ(StoredMonitor().Size, 68u);
    EXPECT_EQ(StoredMonitor().Codes, (std::array<DWORD, 8>{83, 0, 83, 0, 0, 83, 0, 83}));
    EXPECT_EQ(StoredMonitor().Gains, (std::array<DWORD, 8>{128, 0, 128, 0, 0, 128, 0, 128}));
    EXPECT_EQ(sheet.Titles()[0], u"Configuration: 'Kestrelvox'") << "titles are fixed while it is open";
    EXPECT_EQ(Open().Titles()[0], u"Configuration: 'Studio'");
}

TEST_F(ConfigurationPageTest, DigitalOutputOptionsRuleEachOther) {
    StoreNumbers({1, 0, 1, 0, 1, 0, 1, 0, 1});  // consumer, copy protected, with pre-emphasis
    struct Step {
        int Click;
        const char* Options;
    };
    const Step steps[] = {
        {IDC_COPY_PROTECT, "copy off, emphasis on"},    {IDC_PROFESSIONAL, "[copy off], emphasis on"},
        {IDC_CONSUMER, "copy on, emphasis on"},  // as saved, not as ticked before
        {IDC_CONSUMER, "copy on, emphasis on"},         {IDC_NON_AUDIO, "copy on, [emphasis off]"},
        {IDC_PROFESSIONAL, "[copy off], emphasis on"},  {IDC_CONSUMER, "copy on, [emphasis off]"},
        {IDC_NON_AUDIO, "copy on, emphasis on"},        {IDC_PREEMPHASIS, "copy on, emphasis off"},
        {IDC_PROFESSIONAL, "[copy off], emphasis off"},  // was enabled: stays as the user has it
        {IDC_NON_AUDIO, "[copy off], emphasis off"},     // changes nothing else in professional mode
        {IDC_CONSUMER, "copy on, [emphasis off]"},
    };
    Sheet& sheet = Open();
    const SheetPage page = sheet.Current();
    EXPECT_EQ(OutputOptions(page), "copy on, emphasis on");
    for (const Step& step : steps) {
        page.Click(step.Click);
        EXPECT_EQ(OutputOptions(page), step.Options) << "step " << &step - steps;
    }
    sheet.Apply();
    EXPECT_EQ(StoredNumber(u"CopyProtect"), 1u);
    EXPECT_EQ(StoredNumber(u"NonAudio"), 1u);
    EXPECT_EQ(StoredNumber(u"Preemphasis"), 0u) << "what cannot be had is stored as off";
}

TEST_F(ConfigurationPageTest, StoredOptionsThatExcludeEachOtherShowAsOff) {
    StoreNumbers({1, 0, 1, 0, 1, 1, 1, 1, 1});
    Sheet& professional = Open();
    EXPECT_EQ(OutputOptions(professional.Current()), "[copy off], emphasis on");
    professional.Accept();
    EXPECT_EQ(StoredNumber(u"CopyProtect"), 0u);
    EXPECT_EQ(StoredNumber(u"Preemphasis"), 1u);

    Sheet& consumer = Open();
    consumer.Current().Click(IDC_CONSUMER);
    consumer.Accept();
    EXPECT_EQ(OutputOptions(Open().Current()), "copy off, [emphasis off]");
    EXPECT_EQ(StoredNumber(u"Preemphasis"), 0u);
}

TEST_F(TwoCardsConfiguration, ANameOfBlanksIsRefusedAndALongOneIsCut) {
    Sheet& sheet = Open();
    const SheetPage page = sheet.Current();
    for (const std::u16string name : {u"", u"   "}) {
        page.Type(IDC_NAME, name);
        page.Focus(IDC_LEFT);
        const size_t told = test_system::MessageBoxes().size();
        sheet.Show(1);
        EXPECT_EQ(sheet.Current().Window(), page.Window());
        sheet.Ok();
        EXPECT_TRUE(sheet.IsOpen());
        EXPECT_EQ(test_system::MessageBoxes().size(), told + 2);
        page.OnItsThread([&] { EXPECT_EQ(GetFocus(), page.Control(IDC_NAME)); });
        EXPECT_FALSE(StoredName().has_value());
    }
    const std::u16string longest = u" " + std::u16string(49, u'n');
    page.Type(IDC_NAME, longest + u"nnn");
    EXPECT_EQ(page.Text(IDC_NAME), longest);
    sheet.Accept();
    EXPECT_EQ(StoredName(), TextValue(REG_SZ, longest));
}

TEST_F(TwoCardsConfiguration, NewNameShowsInTheClockTreeBeforeApplyAndIsGoneAfterCancel) {
    NameCards();
    const std::u16string before = u"A (automatic clock selection); B (automatic clock selection)";
    const auto tree = [](const Sheet& sheet) {
        return ClockTreeUser(sheet.Show(u"Clocks + Sync").Window()).Outline();
    };
    Sheet& sheet = Open();
    EXPECT_EQ(tree(sheet), before);
    const SheetPage page = sheet.Show(u"Configuration: 'A'");
    page.Type(IDC_NAME, u"New");
    page.Focus(IDC_LEFT);
    EXPECT_EQ(tree(sheet), u"New (automatic clock selection); B (automatic clock selection)");
    EXPECT_EQ(StoredName(), TextValue(REG_SZ, u"A"));

    sheet.Show(u"Configuration: 'A'").Focus(IDC_NAME);  // still there when the sheet goes
    sheet.Dismiss();
    EXPECT_EQ(tree(Open()), before);
}

}  // namespace
