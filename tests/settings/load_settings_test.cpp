// The stored settings of a card as they show in what the card is told: defaults, bad values, odd values.
#include "tests/support/driver_test.h"
#include "tests/support/registry.h"

namespace {

// What one setting of each kind makes of the card when both outputs are open at 44100 Hz: the sample format
// of 24-bit samples in 32-bit slots (3 left-justified, 2 right-justified), the first two bytes of the channel
// status, the gains of mixer inputs 2, 3, 6 and 7, and bits 5 and 6 of card register 32, the clock source.
using CardState = std::vector<unsigned>;

const CardState Defaults = {3, 0x41, 0x00, 128, 0, 0, 128, 0x00};

class LoadSettingsTest : public DriverTest {
protected:
    CardState Load() {
        UnloadDriver();
        const WavePlayer analog(0, PcmFormat(44100, 2, 24, 4));
        const WavePlayer digital(1, PcmFormat(44100, 2, 16));
        return {Cards().OutputRegister(0, Port::Analog, 0) / 0x40u,
                Cards().IndirectRegister(0, 0),
                Cards().IndirectRegister(0, 1),
                Cards().MixerGain(0, 2),
                Cards().MixerGain(0, 3),
                Cards().MixerGain(0, 6),
                Cards().MixerGain(0, 7),
                Cards().CardRegister(0, 32) & 0x60u};
    }

    std::u16string LoadedName() {
        UnloadDriver();
        return DeviceName(0);
    }

    static void StoreBlock(const std::vector<DWORD>& words, DWORD type = REG_BINARY) {
        StoreBinary(0, TEXT("Monitor"), words.data(), static_cast<DWORD>(words.size() * sizeof(DWORD)), type);
    }
};

TEST_F(LoadSettingsTest, TheFirstRunHasDefaultsAndWritesNothing) {
    EXPECT_EQ(Load(), Defaults);
    Cards().SetDigitalInputRate(0, 44100);
    WaveRecorder inputs[2];
    for (const UINT device : {0u, 1u}) {
        EXPECT_EQ(inputs[device].Open(device, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
    }
    for (const unsigned input : {0u, 1u, 4u, 5u}) {
        EXPECT_EQ(Cards().MixerGain(0, input), input == 0 || input == 5 ? 128u : 0u) << input;
    }
    EXPECT_EQ(LoadedName(), u"Kestrelvox Analog");
    EXPECT_FALSE(RegistryKeyExists(ConfigKey()));
    EXPECT_TRUE(test_system::MessageBoxes().empty());
}

TEST_F(LoadSettingsTest, AStoredWordIsTakenOnlyAsFourBytesOrFewer) {
    const struct {
        const WCHAR* Name;
        DWORD Value, Standard;
        CardState Taken;
    } settings[] = {
        {TEXT("Left24"), 0, 1, {2, 0x41, 0x00, 128, 0, 0, 128, 0x00}},
        {TEXT("Professional"), 0, 1, {3, 0x04, 0x81, 128, 0, 0, 128, 0x00}},
        {TEXT("Preemphasis"), 1, 0, {3, 0x4D, 0x00, 128, 0, 0, 128, 0x00}},
        {TEXT("ClockSource"), 64, 97, {3, 0x41, 0x00, 128, 0, 0, 128, 0x40}},
    };
    const struct {
        DWORD Size, Type;
        bool Taken;
    } forms[] = {
        {4, REG_BINARY, true},  {1, REG_BINARY, true},  // the rest of a fresh card's word is 0
        {5, REG_BINARY, false}, {8, REG_BINARY, false}, {4, REG_DWORD, false}, {4, REG_SZ, false},
    };
    Cards().SetDigitalInputRate(0, 44100);
    for (const auto& setting : settings) {
        SCOPED_TRACE(testing::PrintToString(Utf16(setting.Name)));
        for (const auto& form : forms) {
            const DWORD data[2] = {setting.Value, 0};
            StoreBinary(0, setting.Name, data, form.Size, form.Type);
            EXPECT_EQ(Load(), form.Taken ? setting.Taken : Defaults)
                << form.Size << " bytes of type " << form.Type;
        }
        StoreSetting(0, setting.Name, setting.Standard);
        EXPECT_EQ(Load(), Defaults) << "stored as it is anyway";
    }
}

TEST_F(LoadSettingsTest, TheMonitorBlockIsTakenOnlyWithItsSizeInFront) {
    std::vector<DWORD> block = {68, 1, 2, 3, 4, 5, 6, 7, 8, 10, 11, 12, 13, 14, 15, 16, 17};
    CardState taken = {3, 0x41, 0x00, 12, 13, 16, 17, 0x00};

    StoreBlock(block);
    EXPECT_EQ(Load(), taken);
    StoreBlock(block, REG_DWORD);
    EXPECT_EQ(Load(), Defaults);
    for (const DWORD first : {0u, 67u, 69u, 0xFFFFFFFFu}) {
        block[0] = first;
        StoreBlock(block);
        EXPECT_EQ(Load(), Defaults) << first;
    }
    block[0] = 68;
    block.push_back(0);
    StoreBlock(block);
    EXPECT_EQ(Load(), Defaults) << "too long";
    block.resize(16);
    StoreBlock(block);
    taken[6] = 0;
    EXPECT_EQ(Load(), taken) << "what is missing of a short one is 0";
    StoreBlock({});
    EXPECT_EQ(Load(), Defaults) << "without its first word it is none";
}

TEST_F(LoadSettingsTest, NamesAreTextWhateverTheirEnd) {
    const std::u16string sixty(60, u'n');
    const struct {
        std::u16string Stored;
        DWORD Size, Type;
        std::u16string Name;
    } cases[] = {
        {u"Studio", 14, REG_SZ, u"Studio Analog"},
        {u"Studio", 12, REG_SZ, u"Studio Analog"},  // no terminator
        {u"Studio", 11, REG_SZ, u"Studi Analog"},
        {u"", 2, REG_SZ, u" Analog"},
        {u"100%s \u03A9", 16, REG_SZ, u"100%s \u03A9 Analog"},
        {sixty.substr(0, 23), 48, REG_SZ, sixty.substr(0, 23) + u" Analog"},
        {sixty.substr(0, 24), 50, REG_SZ, sixty.substr(0, 24) + u" Analo"},
        {sixty, 122, REG_SZ, std::u16string(30, u'n')},
        {u"Studio", 14, REG_BINARY, u"Kestrelvox Analog"},
    };
    for (const auto& expected : cases) {
        StoreBinary(0, TEXT("Name"), expected.Stored.c_str(), expected.Size, expected.Type);
        EXPECT_EQ(LoadedName(), expected.Name) << expected.Size << " bytes of type " << expected.Type;
    }
}

// Without its device key the card works all the same, with every setting at zero; the user is told.
TEST_F(LoadSettingsTest, ACardWithoutItsKeyIsReportedAndHasNoSettings) {
    StoreText(0, TEXT("Name"), u"Studio");
    StoreSetting(0, TEXT("Left24"), 1);
    AddFault("GET_REGISTRY_PATH:1");
    EXPECT_EQ(Load(), (CardState{2, 0x04, 0x81, 0, 0, 0, 0, 0x00}));
    const std::vector<platform::MessageBoxRecord> boxes = test_system::MessageBoxes();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].Text, u"Could not determine device's registry key");
    EXPECT_EQ(boxes[0].Style, 0x1010u);

    AddFault("GET_REGISTRY_PATH:1");
    EXPECT_EQ(LoadedName(), u"Kestrelvox Analog");
    AddFault("BIND_HANDLE:3");  // no handle to ask through
    EXPECT_EQ(LoadedName(), u"Kestrelvox Analog");
    EXPECT_EQ(test_system::MessageBoxes().size(), 3u);
    EXPECT_EQ(LoadedName(), u"Studio Analog");
}

}  // namespace
